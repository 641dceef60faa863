#include "CleanerCore/Support/PropertyListLimits.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace loftmere::PropertyListLimits {

namespace {

constexpr size_t trailerSize = 32;
constexpr size_t nodeCost = 128; // about what the library takes for a value of no length

// The objects of a binary property list, by the places that its offset table gives.
class ObjectTable {
public:
    static std::optional<ObjectTable> open(std::string_view text);

    bool isWithinLimits() { return cost(top_, 0).has_value(); }

private:
    struct Object {
        uint8_t kind = 0;   // the marker's upper half
        size_t count = 0;   // elements or units
        size_t content = 0; // where they begin
    };
    // What is known of an object that has been looked into.
    struct Measure {
        size_t cost = 0;
        int height = 0;
        bool open = false; // still being looked into: meeting it again is a cycle
    };

    std::optional<uint64_t> number(size_t at, size_t width) const;
    std::optional<Object> object(uint64_t index) const;
    std::optional<size_t> cost(uint64_t index, int depth);
    std::optional<Measure> measure(const Object& object, int depth);
    bool isKey(uint64_t index) const;

    std::string_view text_;
    size_t offsetWidth_ = 0;
    size_t referenceWidth_ = 0;
    uint64_t top_ = 0;
    size_t table_ = 0;
    std::vector<std::optional<Measure>> known_;
};

std::optional<ObjectTable> ObjectTable::open(std::string_view text) {
    if (text.size() < 8 + trailerSize) return std::nullopt;
    ObjectTable table;
    table.text_ = text;
    const size_t trailer = text.size() - trailerSize;
    table.offsetWidth_ = *table.number(trailer + 6, 1);
    table.referenceWidth_ = *table.number(trailer + 7, 1);
    const uint64_t count = *table.number(trailer + 8, 8);
    table.top_ = *table.number(trailer + 16, 8);
    const uint64_t offset = *table.number(trailer + 24, 8);
    const auto isWidth = [](size_t width) { return width >= 1 && width <= 8; };
    if (!isWidth(table.offsetWidth_) || !isWidth(table.referenceWidth_)) return std::nullopt;
    if (offset > trailer || count > (trailer - offset) / table.offsetWidth_) return std::nullopt;
    table.table_ = static_cast<size_t>(offset);
    table.known_.resize(static_cast<size_t>(count));
    return table;
}

std::optional<uint64_t> ObjectTable::number(size_t at, size_t width) const {
    if (at > text_.size() || width > text_.size() - at || width > 8) return std::nullopt;
    uint64_t value = 0;
    for (const char byte : text_.substr(at, width)) value = value << 8 | static_cast<uint8_t>(byte);
    return value;
}

std::optional<ObjectTable::Object> ObjectTable::object(uint64_t index) const {
    const auto at = number(table_ + static_cast<size_t>(index) * offsetWidth_, offsetWidth_);
    if (!at || *at >= table_) return std::nullopt;
    const auto marker = static_cast<uint8_t>(text_[static_cast<size_t>(*at)]);
    Object object{.kind = static_cast<uint8_t>(marker >> 4), .count = marker & 0x0FU, .content = *at + 1};
    const bool hasLength = object.kind >= 0x4 && object.kind != 0x8;
    if (!hasLength || object.count != 0x0F) return object;
    // A count of 15 or more follows as an integer object of 1, 2, 4 or 8 bytes.
    const auto sizeMarker = number(object.content, 1);
    if (!sizeMarker || (*sizeMarker >> 4) != 1 || (*sizeMarker & 0x0F) > 3) return std::nullopt;
    const size_t width = size_t{1} << (*sizeMarker & 0x0F);
    const auto count = number(object.content + 1, width);
    if (!count || *count > text_.size()) return std::nullopt;
    object.count = static_cast<size_t>(*count);
    object.content += 1 + width;
    return object;
}

std::optional<size_t> ObjectTable::cost(uint64_t index, int depth) {
    if (index >= known_.size() || depth > PropertyListLimits::depth) return std::nullopt;
    auto& known = known_[static_cast<size_t>(index)];
    if (!known) {
        const auto found = object(index);
        if (!found) return std::nullopt;
        known = Measure{.open = true};
        auto measured = measure(*found, depth);
        if (!measured || measured->cost > unfoldedBytes) return std::nullopt;
        known = measured;
    }
    if (known->open || depth + known->height > PropertyListLimits::depth) return std::nullopt;
    return known->cost;
}

std::optional<ObjectTable::Measure> ObjectTable::measure(const Object& object, int depth) {
    const bool isDictionary = object.kind == 0xD;
    const bool isArray = object.kind == 0xA || object.kind == 0xB || object.kind == 0xC;
    const size_t unitCost = object.kind == 0x4 ? 1 : 3; // of data, and of text as UTF-8
    if (!isDictionary && !isArray) return Measure{.cost = nodeCost + unitCost * object.count};
    Measure sum{.cost = nodeCost};
    const size_t references = object.count * (isDictionary ? 2 : 1);
    for (size_t i = 0; i < references; ++i) {
        const auto index = number(object.content + i * referenceWidth_, referenceWidth_);
        const auto below = index ? cost(*index, depth + 1) : std::nullopt;
        if (!below || (isDictionary && i < object.count && !isKey(*index))) return std::nullopt;
        sum.cost += *below;
        sum.height = std::max(sum.height, 1 + known_[static_cast<size_t>(*index)]->height);
        if (sum.cost > unfoldedBytes) return std::nullopt;
    }
    return sum;
}

// A text without a zero character: the library takes keys for C strings and ends the program when one is not.
bool ObjectTable::isKey(uint64_t index) const {
    const auto text = object(index);
    if (!text || (text->kind != 0x5 && text->kind != 0x6)) return false;
    const size_t width = text->kind == 0x6 ? 2 : 1;
    for (size_t i = 0; i < text->count; ++i) {
        const auto unit = number(text->content + i * width, width);
        if (!unit || *unit == 0) return false;
    }
    return true;
}

// The position after the next `end`.
size_t after(std::string_view text, size_t at, std::string_view end) {
    const size_t found = text.find(end, at);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

bool isContainer(std::string_view name) {
    return name.starts_with("array") || name.starts_with("dict");
}

// The change of depth that a tag makes, told by what stands between "<" and ">".
int depthChange(std::string_view tag) {
    if (tag.starts_with('/')) return isContainer(tag.substr(1)) ? -1 : 0;
    return isContainer(tag) && !tag.ends_with('/') ? 1 : 0;
}

// A tag that may end elsewhere than at its first ">": property lists have none, but tags could be hidden in
// one.
bool mayHideTags(std::string_view tag) {
    return std::ranges::count(tag, '"') % 2 != 0 || std::ranges::count(tag, '\'') % 2 != 0 ||
           (tag.starts_with('!') && tag.find('[') != std::string_view::npos);
}

// Whether a character is told by a number that is, or may overflow to, zero.
bool namesZero(std::string_view text) {
    for (size_t at = text.find("&#"); at < text.size(); at = text.find("&#", at)) {
        at += text.substr(at + 2).starts_with('x') ? 3 : 2;
        at = std::min(text.find_first_not_of('0', at), text.size());
        const size_t end = std::min(text.find_first_not_of("0123456789abcdefABCDEF", at), text.size());
        if (end == at || end - at > 7) return true;
    }
    return false;
}

// Where a stretch that holds no tags ends, if one begins at `at`.
std::optional<size_t> endOfTagless(std::string_view text, size_t at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) return after(text, at + 4, "-->");
    if (rest.starts_with("<![CDATA[")) return after(text, at + 9, "]]>");
    if (rest.starts_with("<?")) return after(text, at + 2, "?>");
    return std::nullopt;
}

} // namespace

bool isBinary(std::string_view text) {
    return text.starts_with("bplist00");
}

bool allowsBinary(std::string_view text) {
    auto table = ObjectTable::open(text);
    return table && table->isWithinLimits();
}

bool allowsXML(std::string_view text) {
    if (text.find('\0') != std::string_view::npos || namesZero(text)) return false;
    int level = 0;
    size_t cost = text.size();
    for (size_t at = text.find('<'); at < text.size(); at = text.find('<', at)) {
        if (const auto end = endOfTagless(text, at)) {
            at = *end;
            continue;
        }
        const size_t end = std::min(text.find('>', at), text.size());
        const std::string_view tag = text.substr(at + 1, end - at - 1);
        level += depthChange(tag);
        if (!tag.starts_with('/')) cost += nodeCost;
        if (level < 0 || level > depth || mayHideTags(tag) || cost > unfoldedBytes) return false;
        at = end;
    }
    return true;
}

} // namespace loftmere::PropertyListLimits

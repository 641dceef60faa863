#include "CleanerCore/Support/PropertyList.h"

#include "CleanerCore/Support/Text.h"

#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace loftmere {

namespace {

// Limits on what a property list may ask of its reader. The library recurses as deep as a list nests, and
// unfolds an object of a binary list once per reference, so a small hostile file could use up the stack or
// all memory. It is only given bytes that pass.

constexpr int deepest = 100;
constexpr size_t mostUnfoldedBytes = size_t{96} << 20;
constexpr size_t trailerSize = 32;
constexpr size_t nodeCost = 128; // about what the library needs for an empty value

// The objects of a binary property list, found through its offset table.
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
    // What is known about an object that has been measured.
    struct Measure {
        size_t cost = 0;
        int height = 0;
        bool open = false; // still being measured: meeting it again is a cycle
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
    if (index >= known_.size() || depth > deepest) return std::nullopt;
    auto& known = known_[static_cast<size_t>(index)];
    if (!known) {
        const auto found = object(index);
        if (!found) return std::nullopt;
        known = Measure{.open = true};
        auto measured = measure(*found, depth);
        if (!measured || measured->cost > mostUnfoldedBytes) return std::nullopt;
        known = measured;
    }
    if (known->open || depth + known->height > deepest) return std::nullopt;
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
        if (sum.cost > mostUnfoldedBytes) return std::nullopt;
    }
    return sum;
}

// Whether the object is text without a zero character. The library treats keys as C strings and ends the
// program when one is not.
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

// How a tag changes the depth, given the text between "<" and ">".
int depthChange(std::string_view tag) {
    if (tag.starts_with('/')) return isContainer(tag.substr(1)) ? -1 : 0;
    return isContainer(tag) && !tag.ends_with('/') ? 1 : 0;
}

// Whether a tag may end elsewhere than at its first ">". Property lists have no such tag, but it could hide
// others.
bool mayHideTags(std::string_view tag) {
    return std::ranges::count(tag, '"') % 2 != 0 || std::ranges::count(tag, '\'') % 2 != 0 ||
           (tag.starts_with('!') && tag.find('[') != std::string_view::npos);
}

// Whether the text writes a character as a number that is zero, or may overflow to it.
bool namesZero(std::string_view text) {
    for (size_t at = text.find("&#"); at < text.size(); at = text.find("&#", at)) {
        at += text.substr(at + 2).starts_with('x') ? 3 : 2;
        at = std::min(text.find_first_not_of('0', at), text.size());
        const size_t end = std::min(text.find_first_not_of("0123456789abcdefABCDEF", at), text.size());
        if (end == at || end - at > 7) return true;
    }
    return false;
}

// Where a comment, raw text or instruction ends, if one begins at `at`.
std::optional<size_t> endOfTagless(std::string_view text, size_t at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) return after(text, at + 4, "-->");
    if (rest.starts_with("<![CDATA[")) return after(text, at + 9, "]]>");
    if (rest.starts_with("<?")) return after(text, at + 2, "?>");
    return std::nullopt;
}

// Whether the object table is whole, has no cycle and stays within the limits.
bool allowsBinary(std::string_view text) {
    auto table = ObjectTable::open(text);
    return table && table->isWithinLimits();
}

// Whether arrays and dictionaries are not nested too deep, and values not too many. `text` is UTF-8.
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
        if (level < 0 || level > deepest || mayHideTags(tag) || cost > mostUnfoldedBytes) return false;
        at = end;
    }
    return true;
}

struct FreeNode {
    void operator()(void* node) const { plist_free(node); }
};
struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
template <class T> using Allocated = std::unique_ptr<T, FreeMemory>;

constexpr double secondsFrom1970To2001 = 978307200;

PropertyList valueOf(plist_t node);

std::string textOf(plist_t node) {
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text == nullptr ? "" : repairedUTF8({text, static_cast<size_t>(length)});
}

PropertyList::Data dataOf(plist_t node) {
    uint64_t length = 0;
    const auto* data = reinterpret_cast<const std::byte*>(plist_get_data_ptr(node, &length));
    return data == nullptr ? PropertyList::Data{} : PropertyList::Data(data, data + length);
}

// The library's getter answers one and the same date for everything more than 68 years from 2001. So the
// number is read from what the library writes: 8 bytes after the header and a marker.
PropertyList dateOf(plist_t node) {
    constexpr size_t start = 9;
    char* raw = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &raw, &length);
    const Allocated<char> bytes(raw);
    if (!bytes || length < start + 8) return {};
    uint64_t bits = 0;
    for (const char byte : std::string_view(raw + start, 8)) bits = bits << 8 | static_cast<uint8_t>(byte);
    const double seconds = secondsFrom1970To2001 + std::bit_cast<double>(bits);
    const bool isHeld = std::abs(seconds) < std::chrono::duration<double>(distantFuture - Date()).count();
    const bool isRead = seconds != 0; // what the library cannot read in XML becomes 1970
    if (!isHeld || !isRead) return {};
    return {addSeconds(Date(), seconds)};
}

template <class T> T scalarOf(plist_t node, void (*get)(plist_t, T*)) {
    T value{};
    get(node, &value);
    return value;
}

PropertyList::Array arrayOf(plist_t node) {
    PropertyList::Array values;
    plist_array_iter raw = nullptr;
    plist_array_new_iter(node, &raw);
    const Allocated<void> iterator(raw);
    for (plist_t item = nullptr; raw != nullptr;) {
        plist_array_next_item(node, raw, &item);
        if (item == nullptr) break;
        values.push_back(valueOf(item));
    }
    return values;
}

PropertyList::Dictionary dictionaryOf(plist_t node) {
    PropertyList::Dictionary values;
    plist_dict_iter raw = nullptr;
    plist_dict_new_iter(node, &raw);
    const Allocated<void> iterator(raw);
    while (raw != nullptr) {
        plist_t item = nullptr;
        char* name = nullptr;
        plist_dict_next_item(node, raw, &name, &item);
        const Allocated<char> key(name);
        if (item == nullptr) break;
        if (key) values.insert_or_assign(repairedUTF8(key.get()), valueOf(item));
    }
    return values;
}

PropertyList valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: return {scalarOf<uint8_t>(node, plist_get_bool_val) != 0};
    case PLIST_UINT: return {static_cast<int64_t>(scalarOf<uint64_t>(node, plist_get_uint_val))};
    case PLIST_REAL: return {scalarOf<double>(node, plist_get_real_val)};
    case PLIST_STRING: return {textOf(node)};
    case PLIST_DATE: return dateOf(node);
    case PLIST_DATA: return {dataOf(node)};
    case PLIST_ARRAY: return {arrayOf(node)};
    case PLIST_DICT: return {dictionaryOf(node)};
    default: return {};
    }
}

// XML in UTF-8, with or without a byte-order mark, or in UTF-16 with one.
plist_t parseXML(std::string_view bytes) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const auto converted = utf8FromUTF16(bytes);
    if (converted) bytes = *converted;
    if (bytes.starts_with(mark)) bytes.remove_prefix(mark.size());
    plist_t top = nullptr;
    if (allowsXML(bytes)) {
        plist_from_xml(bytes.data(), static_cast<uint32_t>(bytes.size()), &top);
    }
    return top;
}

} // namespace

std::optional<PropertyList> PropertyList::parse(std::string_view bytes) {
    if (bytes.size() > largest) return std::nullopt;
    plist_t raw = nullptr;
    if (bytes.starts_with("bplist00")) {
        if (!allowsBinary(bytes)) return std::nullopt;
        plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &raw);
    } else {
        raw = parseXML(bytes);
    }
    const std::unique_ptr<void, FreeNode> top(raw);
    if (!top) return std::nullopt;
    return valueOf(top.get());
}

} // namespace loftmere

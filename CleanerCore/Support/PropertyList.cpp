#include "CleanerCore/Support/PropertyList.h"

#include "CleanerCore/Support/PropertyListLimits.h"
#include "CleanerCore/Support/Text.h"

#include <plist/plist.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace loftmere {

namespace {

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

// The library's getter turns whatever lies more than 68 years from 2001 into one and the same date. What it
// writes has the number itself: 8 bytes behind the header and a marker.
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

// XML as the platform reads it: in UTF-8, with or without a byte-order mark, or in UTF-16 with one.
plist_t parseXML(std::string_view bytes) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const auto converted = utf8FromUTF16(bytes);
    if (converted) bytes = *converted;
    if (bytes.starts_with(mark)) bytes.remove_prefix(mark.size());
    plist_t top = nullptr;
    if (PropertyListLimits::allowsXML(bytes)) {
        plist_from_xml(bytes.data(), static_cast<uint32_t>(bytes.size()), &top);
    }
    return top;
}

} // namespace

std::optional<PropertyList> PropertyList::parse(std::string_view bytes) {
    if (bytes.size() > PropertyListLimits::bytes) return std::nullopt;
    plist_t raw = nullptr;
    if (PropertyListLimits::isBinary(bytes)) {
        if (!PropertyListLimits::allowsBinary(bytes)) return std::nullopt;
        plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &raw);
    } else {
        raw = parseXML(bytes);
    }
    const std::unique_ptr<void, FreeNode> top(raw);
    if (!top) return std::nullopt;
    return valueOf(top.get());
}

} // namespace loftmere

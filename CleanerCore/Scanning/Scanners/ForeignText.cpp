#include "CleanerCore/Scanning/Scanners/ForeignText.h"

#include "CleanerCore/Support/Json.h"
#include "CleanerCore/Support/PropertyList.h"
#include "CleanerCore/Support/Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <locale>
#include <sstream>

namespace loftmere::ForeignText {

namespace {

struct Unit {
    std::string_view suffix;
    double bytes;
};

constexpr std::array units{
    Unit{"TB", 1e12}, Unit{"GB", 1e9}, Unit{"MB", 1e6}, Unit{"kB", 1e3}, Unit{"KB", 1e3}, Unit{"B", 1},
};

// A whole text as a number, whatever decimal point the user's locale has.
double numberIn(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double number = 0;
    stream >> std::noskipws >> number;
    return !stream.fail() && stream.peek() == std::istringstream::traits_type::eof() ? number : 0;
}

// The string of an object's member; null when the value is no object or has no such string.
const std::string* stringIn(const Json& value, const char* key) {
    if (!value.is_object()) return nullptr;
    const auto member = value.find(key);
    return member != value.end() ? member->get_ptr<const std::string*>() : nullptr;
}

} // namespace

std::vector<std::string> simulatorIdentifiers(const std::string& output) {
    std::vector<std::string> identifiers;
    const auto answer = parseJson(output);
    if (!answer || !answer->is_object()) return identifiers;
    const auto runtimes = answer->find("devices");
    if (runtimes == answer->end() || !runtimes->is_object()) return identifiers;
    for (const Json& devices : *runtimes) {
        if (!devices.is_array()) continue;
        for (const Json& device : devices) {
            if (const std::string* udid = stringIn(device, "udid")) identifiers.push_back(*udid);
        }
    }
    return identifiers;
}

std::map<std::string, int64_t> reclaimableSizes(const std::string& output) {
    std::map<std::string, int64_t> sizes;
    for (const std::string& line : splitOmittingEmpty(output, '\n')) {
        const auto row = parseJson(line);
        if (!row) continue;
        const std::string* type = stringIn(*row, "Type");
        const std::string* size = stringIn(*row, "Reclaimable");
        if (type != nullptr && size != nullptr) sizes[*type] = parseSize(*size);
    }
    return sizes;
}

int64_t parseSize(std::string_view text) {
    const size_t blank = text.find(' ');
    if (blank != 0) text = text.substr(0, blank);
    for (const Unit& unit : units) {
        if (!text.ends_with(unit.suffix)) continue;
        text.remove_suffix(unit.suffix.size());
        const double bytes = numberIn(text) * unit.bytes;
        // No disk holds more than a 64-bit count can say, and infinity or a non-number is not worth a guess.
        const bool fits = bytes > -0x1p63 && bytes < 0x1p63;
        return fits ? static_cast<int64_t>(bytes) : 0;
    }
    return 0;
}

BackupInfo backupInfo(const std::string& propertyList) {
    BackupInfo result;
    const auto info = PropertyList::parse(propertyList);
    if (!info) return result;
    const auto* name = info->at<std::string>("Device Name");
    if (name == nullptr) name = info->at<std::string>("Display Name");
    if (name != nullptr) result.deviceName = *name;
    if (const auto* date = info->at<Date>("Last Backup Date")) result.lastBackup = *date;
    return result;
}

} // namespace loftmere::ForeignText

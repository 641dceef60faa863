#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Support/RecordCodec.h"
#include "CleanerCore/Support/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>

namespace loftmere {

namespace {

constexpr std::tuple fields{
    field("id", &AuditEntry::id),           field("date", &AuditEntry::date),
    field("action", &AuditEntry::action),   field("target", &AuditEntry::target),
    field("size", &AuditEntry::size),       field("category", &AuditEntry::category),
    field("trigger", &AuditEntry::trigger), field("success", &AuditEntry::success),
    field("message", &AuditEntry::message),
};

// A quarantined item can still come back and an evicted one is in the cloud, so neither counts.
constexpr std::array<std::string_view, 4> freeingActions{"delete", "trash", "command", "purge"};

bool isFreeing(std::string_view action) {
    return std::ranges::find(freeingActions, action) != freeingActions.end();
}

// Reads a line in exactly the form in which entries are written. Anything else, however valid, is refused:
// then the JSON reader decides.
class LineReader {
public:
    explicit LineReader(std::string_view line) : rest_(line) {}

    bool take(std::string_view text) {
        if (!rest_.starts_with(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    // A string that stands for itself, without escapes.
    std::optional<std::string_view> takeString() {
        if (!take("\"")) return std::nullopt;
        const size_t end = rest_.find('"');
        if (end == std::string_view::npos) return std::nullopt;
        const std::string_view text = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        if (!standsForItself(text)) return std::nullopt;
        return text;
    }

    std::optional<int64_t> takeInteger() {
        int64_t value = 0;
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        const std::string_view digits = rest_.substr(0, static_cast<size_t>(end - rest_.data()));
        const bool hasLeadingZero = digits.starts_with("-0") || (digits.starts_with("0") && digits != "0");
        if (error != std::errc() || hasLeadingZero) return std::nullopt;
        rest_.remove_prefix(digits.size());
        return value;
    }

    bool isAtEnd() const { return rest_.empty(); }

private:
    static bool standsForItself(std::string_view text) {
        bool isSpecial = false;
        bool isPlainASCII = true;
        for (const char c : text) { // without an early end, so that it runs on many bytes at once
            isSpecial |= static_cast<unsigned char>(c) < 0x20 || c == '\\';
            isPlainASCII &= static_cast<unsigned char>(c) < 0x80;
        }
        return !isSpecial && (isPlainASCII || isValidUTF8(text));
    }

    std::string_view rest_;
};

bool takeTrigger(LineReader& line) {
    if (line.take(R"({"manual":{}})")) return true;
    const bool hasName = line.take(R"({"schedule":{"ruleName":)") || line.take(R"({"uninstall":{"appName":)");
    return hasName && line.takeString() && line.take("}}");
}

// A member that may be left out. False when it is there in another form.
bool takeOptional(LineReader& line, std::string_view key, std::optional<std::string_view>& value) {
    if (!line.take(key)) return true;
    value = line.takeString();
    return value.has_value() && line.take(",");
}

// Absent when the line is in another form than the one written.
std::optional<int64_t> quicklyFreedBytesOf(LineReader line) {
    std::optional<std::string_view> category;
    std::optional<std::string_view> message;
    if (!line.take(R"({"action":)")) return std::nullopt;
    const auto action = line.takeString();
    if (!action || !line.take(",") || !takeOptional(line, R"("category":)", category)) return std::nullopt;
    if (!line.take(R"("date":)")) return std::nullopt;
    const auto date = line.takeString();
    if (!date || !line.take(R"(,"id":)") || !line.takeString() || !line.take(",")) return std::nullopt;
    if (!takeOptional(line, R"("message":)", message) || !line.take(R"("size":)")) return std::nullopt;
    const auto size = line.takeInteger();
    if (!size || !line.take(R"(,"success":)")) return std::nullopt;
    const bool success = line.take("true");
    if ((!success && !line.take("false")) || !line.take(R"(,"target":)") || !line.takeString())
        return std::nullopt;
    if (!line.take(R"(,"trigger":)") || !takeTrigger(line) || !line.take("}") || !line.isAtEnd())
        return std::nullopt;
    if (!success || !isFreeing(*action)) return 0;
    const bool decodes = fromISO8601(*date) && (!category || caseNamed<CleanCategory>(*category));
    return decodes ? *size : 0;
}

} // namespace

LOFTMERE_RECORD_CODEC(AuditEntry, fields)

AuditEntry AuditEntry::now(std::string action, std::string target, TriggerSource trigger) {
    AuditEntry entry;
    entry.id = newUUID();
    entry.date = currentDate();
    entry.action = std::move(action);
    entry.target = std::move(target);
    entry.trigger = std::move(trigger);
    return entry;
}

std::optional<AuditEntry> AuditEntry::ofLine(std::string_view line) {
    const auto json = parseJson(line);
    return json ? JsonCodec<AuditEntry>::decode(*json) : std::nullopt;
}

int64_t AuditEntry::freedBytes() const {
    return success && isFreeing(action) ? size : 0;
}

int64_t freedBytesOf(std::string_view line) {
    if (const auto quick = quicklyFreedBytesOf(LineReader(line))) return *quick;
    const auto entry = AuditEntry::ofLine(line);
    return entry ? entry->freedBytes() : 0;
}

} // namespace loftmere

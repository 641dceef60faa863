#include "terminal/JsonOutput.h"

#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace loftmere {

namespace {

constexpr int indent = 2;

} // namespace

void JsonOutput::value(const Json& value, std::string_view key) {
    startValue(key);
    const std::string deeper = newLine(); // line ends stand between values only: in texts they are escaped
    std::string text;
    for (const char c : printableJson(value.dump(indent, ' ', false, Json::error_handler_t::replace))) {
        if (c == '\n')
            text += deeper;
        else
            text += c;
    }
    console_.print(text);
    if (open_.empty()) console_.printLine();
}

void JsonOutput::end() {
    const char bracket = open_.back() == '{' ? '}' : ']';
    open_.pop_back();
    console_.print((isEmpty_ ? "" : newLine()) + bracket);
    isEmpty_ = false;
    if (open_.empty()) console_.printLine();
}

void JsonOutput::begin(std::string_view key, char bracket) {
    startValue(key);
    open_ += bracket;
    console_.print({&bracket, 1});
    isEmpty_ = true;
}

void JsonOutput::startValue(std::string_view key) {
    if (!open_.empty()) console_.print((isEmpty_ ? "" : ",") + newLine());
    if (!key.empty()) console_.print(fmt::format("\"{}\": ", key));
    isEmpty_ = false;
}

std::string JsonOutput::newLine() const {
    return "\n" + std::string(open_.size() * indent, ' ');
}

} // namespace loftmere

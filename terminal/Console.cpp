#include "terminal/Console.h"

#include "CleanerCore/Platform/Terminal.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/Layout.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>

namespace loftmere {

namespace {

constexpr Glyphs unicodeGlyphs{"✓", "…", "·", "█", "░", {"⠋", "⠹", "⠼", "⠧"}};
constexpr Glyphs asciiGlyphs{"x", "...", "-", "#", ".", {"|", "/", "-", "\\"}};
constexpr size_t bufferSize = 64 * 1024;
constexpr int usualWidth = 80;
constexpr int narrowest = 20; // a screen narrower than this is treated as this wide
constexpr int indent = 2;

std::string_view environment(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing sets the environment
    return value ? value : "";
}

bool localeIsUTF8() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const std::string value = asciiLowercased(environment(name));
        if (!value.empty()) return value.contains("utf-8") || value.contains("utf8");
    }
    return false;
}

StandardStream streamOf(Output output) {
    return output == Output::data ? StandardStream::output : StandardStream::error;
}

bool isCapable() {
    return environment("TERM") != "dumb" && !environment("TERM").empty();
}

int widthOf(StandardStream stream) {
    if (const auto columns = terminalColumns(stream)) return *columns;
    const long columns = std::strtol(std::string(environment("COLUMNS")).c_str(), nullptr, 10);
    return columns > 0 && columns < 10000 ? static_cast<int>(columns) : usualWidth;
}

const char* escapeOf(Ink ink) {
    switch (ink) {
    case Ink::plain: return "";
    case Ink::bold: return "\x1B[1m";
    case Ink::dim: return "\x1B[2m";
    case Ink::green: return "\x1B[32m";
    case Ink::yellow: return "\x1B[33m";
    case Ink::red: return "\x1B[31m";
    }
    return "";
}

std::string inASCII(std::string_view text) {
    std::string plain;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80)
            plain += c;
        else if (byte >= 0xC0) // the first of a character's bytes
            plain += '?';
    }
    return plain;
}

} // namespace

Console::Console() {
    const bool errorIsTerminal = isTerminal(StandardStream::error);
    live_ = errorIsTerminal && isCapable();
    canAsk_ = errorIsTerminal && isTerminal(StandardStream::input);
    const bool isUTF8 = localeIsUTF8();
    glyphs_ = isUTF8 ? &unicodeGlyphs : &asciiGlyphs;
    asciiError_ = errorIsTerminal && !isUTF8;
    printTo(Output::data);
}

bool Console::isScreen(Output output) {
    return isTerminal(streamOf(output));
}

void Console::printTo(Output output) {
    flush();
    output_ = output;
    const bool forTerminal = isScreen(output);
    width_ = forTerminal ? std::max(widthOf(streamOf(output)), narrowest) : 0;
    colour_ = forTerminal && isCapable() && environment("NO_COLOR").empty();
    asciiOut_ = forTerminal && glyphs_ == &asciiGlyphs;
}

std::string Console::paint(Ink ink, std::string_view text) const {
    if (!colour_ || ink == Ink::plain || text.empty()) return std::string(text);
    return escapeOf(ink) + std::string(text) + "\x1B[0m";
}

std::string Console::forError(std::string_view text) const {
    return asciiError_ ? inASCII(text) : std::string(text);
}

void Console::print(std::string_view text) {
    if (asciiOut_)
        pending_ += inASCII(text);
    else
        pending_ += text;
    if (pending_.size() >= bufferSize) flush();
}

void Console::printLine(std::string_view text) {
    print(text);
    print("\n");
}

bool Console::flush() {
    if (output_ == Output::person || (!readerGone_ && !failed_)) {
        const Written written = writeText(streamOf(output_), pending_);
        if (output_ == Output::data) {
            readerGone_ = written == Written::readerGone;
            failed_ = written == Written::failed;
        }
    }
    pending_.clear();
    return !failed_;
}

void Console::say(std::string_view message) {
    flush();
    writeText(StandardStream::error, "loftmere: " + forError(message) + "\n");
}

std::string Console::ask(std::string_view question) {
    flush();
    writeText(StandardStream::error, forError(question));
    return readLine();
}

StatusLine::~StatusLine() {
    eraseLiveLine();
}

void StatusLine::draw(const std::string& text) const {
    if (!console_.isLive()) return;
    // The last column stays free: some terminals wrap as soon as it is written.
    const int width = terminalColumns(StandardStream::error).value_or(usualWidth) - 1;
    drawLiveLine(console_.forError(cutEnd(text, width, console_.glyphs().ellipsis)));
}

void JsonOutput::value(const Json& value, std::string_view key) {
    startValue(key);
    const std::string deeper = newLine(); // line feeds are between values only; within texts they are escaped
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

#include "terminal/Console.h"

#include "CleanerCore/Support/Text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace loftmere {

namespace {

constexpr Glyphs unicodeGlyphs{"✓", "…", "·", "█", "░", {"⠋", "⠹", "⠼", "⠧"}};
constexpr Glyphs asciiGlyphs{"x", "...", "-", "#", ".", {"|", "/", "-", "\\"}};
constexpr size_t bufferSize = 64 * 1024;

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

int descriptorOf(Output output) {
    return output == Output::data ? STDOUT_FILENO : STDERR_FILENO;
}

bool isCapable() {
    return environment("TERM") != "dumb" && !environment("TERM").empty();
}

int terminalWidth(int descriptor) {
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    const long columns = std::strtol(std::string(environment("COLUMNS")).c_str(), nullptr, 10);
    return columns > 0 && columns < 10000 ? static_cast<int>(columns) : 80;
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

int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR) return errno;
        if (written > 0) text.remove_prefix(static_cast<size_t>(written));
    }
    return 0;
}

Console::Console() {
    const bool errorIsTerminal = ::isatty(STDERR_FILENO) == 1;
    live_ = errorIsTerminal && isCapable();
    canAsk_ = errorIsTerminal && ::isatty(STDIN_FILENO) == 1;
    const bool isUTF8 = localeIsUTF8();
    glyphs_ = isUTF8 ? &unicodeGlyphs : &asciiGlyphs;
    asciiError_ = errorIsTerminal && !isUTF8;
    printTo(Output::data);
}

void Console::printTo(Output output) {
    flush();
    output_ = output;
    const int descriptor = descriptorOf(output);
    const bool isTerminal = ::isatty(descriptor) == 1;
    width_ = isTerminal ? terminalWidth(descriptor) : 0;
    colour_ = isTerminal && isCapable() && environment("NO_COLOR").empty();
    asciiOut_ = isTerminal && glyphs_ == &asciiGlyphs;
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
    if (output_ == Output::person) {
        writeAll(STDERR_FILENO, pending_);
    } else if (!readerGone_ && !failed_) {
        const int error = writeAll(STDOUT_FILENO, pending_);
        readerGone_ = error == EPIPE;
        failed_ = error != 0 && error != EPIPE;
    }
    pending_.clear();
    return !failed_;
}

void Console::say(std::string_view message) {
    flush();
    writeAll(STDERR_FILENO, "loftmere: " + forError(message) + "\n");
}

std::string Console::ask(std::string_view question) {
    flush();
    writeAll(STDERR_FILENO, forError(question));
    std::string answer;
    char c = 0;
    while (true) {
        const ssize_t got = ::read(STDIN_FILENO, &c, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0 || c == '\n') return answer;
        answer += c;
    }
}

} // namespace loftmere

#include "CleanerCore/Platform/System.h"

#include "CleanerCore/Platform/posix/SystemParts.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <pwd.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace loftmere {

namespace {

constexpr rlim_t enoughDescriptors = 4096;
constexpr size_t fewestDescriptors = 20; // what the oldest systems grant

// Empty for a variable that is not set.
std::string_view variable(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here sets the environment
    return value == nullptr ? "" : value;
}

std::string_view chosenLocale() {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) { // the strongest first
        if (const auto value = variable(name); !value.empty()) return value;
    }
    return "C";
}

} // namespace

std::string homeDirectory() {
    if (const auto home = variable("HOME"); home.starts_with('/')) return std::string(home);
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16384);
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_dir : "/";
}

std::string userLocale() {
    std::string_view locale = chosenLocale();
    locale = locale.substr(0, locale.find_first_of(".@")); // without the encoding and the variant
    return std::string(locale == "C" || locale == "POSIX" ? "en_US" : locale);
}

size_t descriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return fewestDescriptors;
    return static_cast<size_t>(std::min(limit.rlim_cur, enoughDescriptors));
}

void raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= enoughDescriptors) return;
    limit.rlim_cur = std::min(limit.rlim_max, enoughDescriptors);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

std::string randomBytes(size_t count) {
    std::string bytes(count, '\0');
    if (::getentropy(bytes.data(), count) != 0) std::abort();
    return bytes;
}

std::string newUUID() {
    std::string bytes = randomBytes(16);
    bytes[6] = static_cast<char>((bytes[6] & 0x0F) | 0x40); // version 4: random
    bytes[8] = static_cast<char>((bytes[8] & 0x3F) | 0x80);
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += fmt::format("{:02X}", static_cast<unsigned char>(bytes[i]));
    }
    return text;
}

std::string_view adminCommand(std::string_view name) {
    const auto row = std::ranges::find(adminCommands(), name, &AdminCommand::name);
    return row != adminCommands().end() ? row->text : std::string_view();
}

SharedLibrary SharedLibrary::load(const std::string& name, int version) {
    SharedLibrary library;
    for (const std::string_view pattern : libraryPaths()) {
        const std::string path =
            fmt::format(fmt::runtime(pattern), fmt::arg("name", name), fmt::arg("version", version));
        library.handle_ = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (library) break;
    }
    return library;
}

void* SharedLibrary::address(const char* symbol) const {
    return handle_ == nullptr ? nullptr : ::dlsym(handle_, symbol);
}

} // namespace loftmere

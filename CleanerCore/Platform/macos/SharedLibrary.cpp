#include "CleanerCore/Platform/SharedLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <array>

namespace loftmere {

namespace {

// The program's own bundle first, then the places of package managers, which are on no default search path.
constexpr std::array<const char*, 4> folders{"@rpath/", "/opt/homebrew/lib/", "/usr/local/lib/",
                                             "/opt/local/lib/"};

} // namespace

SharedLibrary SharedLibrary::load(const std::string& name, int version) {
    SharedLibrary library;
    for (const char* folder : folders) {
        library.handle_ =
            ::dlopen(fmt::format("{}{}.{}.dylib", folder, name, version).c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (library) break;
    }
    return library;
}

void* SharedLibrary::address(const char* symbol) const {
    return handle_ == nullptr ? nullptr : ::dlsym(handle_, symbol);
}

} // namespace loftmere

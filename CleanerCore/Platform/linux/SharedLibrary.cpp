#include "CleanerCore/Platform/SharedLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

namespace loftmere {

SharedLibrary SharedLibrary::load(const std::string& name, int version) {
    SharedLibrary library;
    library.handle_ = ::dlopen(fmt::format("{}.so.{}", name, version).c_str(), RTLD_LAZY | RTLD_LOCAL);
    return library;
}

void* SharedLibrary::address(const char* symbol) const {
    return handle_ == nullptr ? nullptr : ::dlsym(handle_, symbol);
}

} // namespace loftmere

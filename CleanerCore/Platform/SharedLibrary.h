#pragma once

#include <string>

namespace loftmere {

// A library that is loaded when it is first needed, because loading it with the program would slow every
// start. Stays loaded until the process ends.
class SharedLibrary {
public:
    // "libvips" and 42, say. Empty when the system has no such library.
    static SharedLibrary load(const std::string& name, int version);

    explicit operator bool() const { return handle_ != nullptr; }

    // Sets `function` to the address of a symbol of the library or of those it rests on. False when there is
    // none.
    template <class Function> bool find(const char* symbol, Function*& function) const {
        function = reinterpret_cast<Function*>(address(symbol));
        return function != nullptr;
    }

private:
    void* address(const char* symbol) const;

    void* handle_ = nullptr;
};

} // namespace loftmere

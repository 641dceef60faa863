#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// What the system gives a process: its user, limits, chance, commands and libraries. Any thread may ask.
namespace loftmere {

// The current user's home folder: $HOME where that is an absolute path, else the password file's.
std::string homeDirectory();

// The locale in which the user reads dates, such as "de_DE": what the environment says (LC_ALL, LC_TIME,
// LANG), "en_US" where it names none.
std::string userLocale();

// How many files this process may have open at once.
size_t descriptorLimit();

// Raises that limit to what a scan of everything needs, as far as the system allows; its default may be 256.
// Children inherit the limit, so this belongs at a program's start.
void raiseDescriptorLimit();

// Bytes from the system's own random source, fit for secrets; at most 256 at a time. Ends the program where
// the system has none to give, since no secret is better than a guessable one.
std::string randomBytes(size_t count);

// A new random UUID in upper-case text, such as "7F3A9C10-0B2E-4C5D-9E8F-0123456789AB".
std::string newUUID();

// What the root helper calls a thing that it runs, and this system's command for it: shell text that
// arguments may follow. One table serves the helper and the one-shot commands that replace it.
struct AdminCommand {
    std::string_view name;
    std::string_view text;
};

std::span<const AdminCommand> adminCommands();

// The text of one command; empty for an unknown name.
std::string_view adminCommand(std::string_view name);

// A library that is loaded when it is first needed, because loading it with the program would slow every
// start. It stays loaded until the process ends.
class SharedLibrary {
public:
    // "libvips" and 42, say. Empty when the system has no such library.
    static SharedLibrary load(const std::string& name, int version);

    explicit operator bool() const { return handle_ != nullptr; }

    // Sets `function` to the address of a symbol of the library or of those it depends on. False when there
    // is none.
    template <class Function> bool find(const char* symbol, Function*& function) const {
        function = reinterpret_cast<Function*>(address(symbol));
        return function != nullptr;
    }

private:
    void* address(const char* symbol) const;

    void* handle_ = nullptr;
};

} // namespace loftmere

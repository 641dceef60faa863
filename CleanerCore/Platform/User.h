#pragma once

#include <string>

namespace loftmere {

// The current user's home folder: $HOME where that is an absolute path, else the password file's.
std::string homeDirectory();

// The locale in which the user reads dates, such as "de_DE": what the environment says (LC_ALL, LC_TIME,
// LANG), "en_US" where it names none. Any thread.
std::string userLocale();

} // namespace loftmere

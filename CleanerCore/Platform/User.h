#pragma once

#include <string>

namespace loftmere {

// The current user's home folder: $HOME where that is an absolute path, else the password file's.
std::string homeDirectory();

} // namespace loftmere

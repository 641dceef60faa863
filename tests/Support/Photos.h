#pragma once

#include "CleanerCore/Platform/FileContent.h"

#include <string>

namespace loftmere::test {

// The pictures of tests/Scanning/photos; make.sh there says what they are.
inline std::string photo(const std::string& name) {
    return std::string(LOFTMERE_SOURCE_DIR "/tests/Scanning/photos/") + name;
}

inline std::string photoContent(const std::string& name) {
    return readFile(photo(name)).value_or("");
}

} // namespace loftmere::test

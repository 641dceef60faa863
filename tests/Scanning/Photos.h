#pragma once

#include "CleanerCore/Platform/FileContent.h"

#include <string>

namespace loftmere::test {

// The pictures that stand beside these tests; photos/make.sh tells what they are.
inline std::string photo(const std::string& name) {
    return std::string(LOFTMERE_SOURCE_DIR "/tests/Scanning/photos/") + name;
}

inline std::string photoContent(const std::string& name) {
    return readFile(photo(name)).value_or("");
}

} // namespace loftmere::test

#include "CleanerCore/Platform/RandomBytes.h"

#include <sys/random.h>
#include <unistd.h>

#include <cstdlib>

namespace loftmere {

std::string randomBytes(size_t count) {
    std::string bytes(count, '\0');
    if (::getentropy(bytes.data(), count) != 0) std::abort();
    return bytes;
}

} // namespace loftmere

#include "tests/Support/Mounted.h"

namespace loftmere::test {

// Nothing is mounted in memory here: the tests that need it skip themselves.
Mounted::Mounted(const std::string&, std::string at) : path(std::move(at)), done(false) {}

Mounted::~Mounted() = default;

} // namespace loftmere::test

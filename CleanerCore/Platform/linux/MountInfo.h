#pragma once

#include <string>
#include <vector>

namespace loftmere {

// The mount points in a text like "/proc/self/mountinfo". Lines of another form are left out. Any thread.
std::vector<std::string> mountPointsIn(const std::string& mountInfo);

} // namespace loftmere

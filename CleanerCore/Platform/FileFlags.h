#pragma once

#include <string>

namespace loftmere {

// Whether the item itself is marked as hidden, apart from its name. False where the system has no such mark.
bool isMarkedHidden(const std::string& path);

// Whether only the cloud holds the content of an open file, so that reading would fetch it.
bool isCloudPlaceholder(int fd);

} // namespace loftmere

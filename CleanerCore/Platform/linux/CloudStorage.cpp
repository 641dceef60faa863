#include "CleanerCore/Platform/CloudStorage.h"

#include "CleanerCore/Platform/Removal.h"

namespace loftmere::CloudStorage {

Status coordinatedRemove(const Place& place) {
    return removeItem(place);
}

std::optional<bool> isContentLocal(const std::string& /*path*/) {
    return std::nullopt;
}

Status evict(const std::string& /*path*/) {
    return mayEvict();
}

Status mayEvict() {
    return failed(Failure::saying("this system cannot release local copies of iCloud files"));
}

} // namespace loftmere::CloudStorage

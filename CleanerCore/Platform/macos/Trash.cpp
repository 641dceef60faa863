#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/posix/TrashFolder.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

Status trashItem(const Place& place, const std::string& home) {
    auto trash = Place::open(joinPath(home, ".Trash/" + place.name()));
    if (!trash) return failed(std::move(trash.error()));
    return moveUnderFreeName(place, *trash);
}

} // namespace loftmere

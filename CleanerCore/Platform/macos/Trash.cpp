#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/posix/TrashFolder.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

Status trashItem(const Place& place, const std::string& home) {
    auto trash = Place::open(joinPath(home, ".Trash/" + place.name()));
    if (!trash) return failed(std::move(trash.error()));
    return moveUnderFreeName(place, *trash);
}

Status mayTrashItem(const Place& place, const std::string& home) {
    const auto trash = Place::open(joinPath(home, ".Trash/" + place.name()));
    return trash ? mayMoveItem(place, *trash) : Status{};
}

} // namespace loftmere

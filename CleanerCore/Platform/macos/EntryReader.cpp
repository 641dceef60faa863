#include "CleanerCore/Platform/posix/EntryReader.h"

#include <sys/attr.h>
#include <unistd.h>

#include <cstring>

namespace loftmere {

namespace {

// Takes the next value from the packed answer, which is aligned to 4 bytes only.
template <class T> T taken(const std::byte*& at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    at += sizeof value;
    return value;
}

// The values of `enum vtype`, whose header not every SDK has.
enum VnodeType : fsobj_type_t { vnodeRegular = 1, vnodeDirectory = 2, vnodeLink = 5 };

FileType typeOf(fsobj_type_t type) {
    switch (type) {
    case vnodeRegular: return FileType::regular;
    case vnodeDirectory: return FileType::directory;
    case vnodeLink: return FileType::symlink;
    default: return FileType::other;
    }
}

} // namespace

EntryReader::EntryReader() : buffer_(new std::byte[capacity]) {}

bool EntryReader::read(int folder) {
    folder_ = folder;
    position_ = end_ = 0;
    attrlist wanted{};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.commonattr = ATTR_CMN_RETURNED_ATTRS | ATTR_CMN_ERROR | ATTR_CMN_NAME | ATTR_CMN_OBJTYPE;
    wanted.fileattr = ATTR_FILE_ALLOCSIZE; // of all forks
    const int got = ::getattrlistbulk(folder, &wanted, buffer_.get(), capacity, FSOPT_NOFOLLOW);
    count_ = got > 0 ? got : 0;
    // The answer says how many entries there are, not where they end.
    for (int64_t i = 0; i < count_; ++i) {
        uint32_t length = 0;
        std::memcpy(&length, buffer_.get() + end_, sizeof length);
        end_ += length;
    }
    return count_ > 0;
}

bool EntryReader::next(RawEntry& entry) {
    if (position_ >= end_) return false;
    const std::byte* at = buffer_.get() + position_;
    position_ += taken<uint32_t>(at);
    const auto returned = taken<attribute_set_t>(at);
    entry = {.name = "", .type = FileType::other, .allocated = std::nullopt};
    if ((returned.commonattr & ATTR_CMN_ERROR) != 0) (void)taken<uint32_t>(at);
    if ((returned.commonattr & ATTR_CMN_NAME) != 0) {
        const std::byte* const start = at;
        const auto name = taken<attrreference_t>(at);
        entry.name = reinterpret_cast<const char*>(start + name.attr_dataoffset);
    }
    if ((returned.commonattr & ATTR_CMN_OBJTYPE) != 0) entry.type = typeOf(taken<fsobj_type_t>(at));
    if ((returned.fileattr & ATTR_FILE_ALLOCSIZE) != 0) entry.allocated = taken<off_t>(at);
    return true;
}

int64_t allocatedSize(int, const RawEntry& entry) {
    return entry.type == FileType::regular ? entry.allocated.value_or(0) : 0;
}

} // namespace loftmere

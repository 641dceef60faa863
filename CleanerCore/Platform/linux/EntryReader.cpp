#include "CleanerCore/Platform/posix/EntryReader.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <string_view>

namespace loftmere {

namespace {

struct Measure {
    FileType type = FileType::other;
    int64_t allocated = 0;
};

Measure measured(int folder, const char* name) {
    struct statx raw{};
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (::statx(folder, name, flags, STATX_TYPE | STATX_BLOCKS, &raw) != 0) return {};
    if (S_ISDIR(raw.stx_mode)) return {FileType::directory, 0};
    if (S_ISLNK(raw.stx_mode)) return {FileType::symlink, 0};
    if (!S_ISREG(raw.stx_mode)) return {};
    return {FileType::regular, static_cast<int64_t>(raw.stx_blocks) * 512};
}

bool isDotOrDotDot(std::string_view name) {
    return name == "." || name == "..";
}

} // namespace

EntryReader::EntryReader() : buffer_(new std::byte[capacity]) {}

bool EntryReader::read(int folder) {
    folder_ = folder;
    position_ = end_ = 0;
    count_ = 0;
    const ssize_t got = ::getdents64(folder, buffer_.get(), capacity);
    if (got <= 0) return false;
    end_ = static_cast<size_t>(got);
    for (size_t at = 0; at < end_;) {
        const auto* raw = reinterpret_cast<const dirent64*>(buffer_.get() + at);
        if (!isDotOrDotDot(raw->d_name)) ++count_;
        at += raw->d_reclen;
    }
    return true;
}

bool EntryReader::next(RawEntry& entry) {
    const dirent64* raw = nullptr;
    do {
        if (position_ >= end_) return false;
        raw = reinterpret_cast<const dirent64*>(buffer_.get() + position_);
        position_ += raw->d_reclen;
    } while (isDotOrDotDot(raw->d_name));

    entry = {.name = raw->d_name, .type = FileType::other, .allocated = std::nullopt};
    switch (raw->d_type) {
    case DT_REG: entry.type = FileType::regular; break;
    case DT_DIR: entry.type = FileType::directory; break;
    case DT_LNK: entry.type = FileType::symlink; break;
    case DT_UNKNOWN: {
        const Measure measure = measured(folder_, raw->d_name);
        entry.type = measure.type;
        entry.allocated = measure.allocated;
        break;
    }
    default: break;
    }
    return true;
}

int64_t allocatedSize(int folder, const RawEntry& entry) {
    if (entry.type != FileType::regular) return 0;
    return entry.allocated ? *entry.allocated : measured(folder, entry.name).allocated;
}

} // namespace loftmere

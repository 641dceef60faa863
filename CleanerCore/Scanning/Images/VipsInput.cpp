#include "CleanerCore/Scanning/Images/VipsInput.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace loftmere {

VipsInput::VipsInput(const VipsLibrary& vips, int fd, const FS::CancelCheck& isCancelled)
    : vips_(vips), fd_(fd), isCancelled_(isCancelled), source_(vips.sourceCustomNew()) {
    if (source_ == nullptr) return;
    vips.signalConnectData(source_, "read", reinterpret_cast<GCallback>(read), this, nullptr,
                           GConnectFlags(0));
    vips.signalConnectData(source_, "seek", reinterpret_cast<GCallback>(seek), this, nullptr,
                           GConnectFlags(0));
}

VipsInput::~VipsInput() {
    if (source_ != nullptr) vips_.objectUnref(source_);
}

gint64 VipsInput::read(VipsSourceCustom* /*source*/, void* buffer, gint64 length, VipsInput* input) {
    if (input->isCancelled_ && input->isCancelled_()) return -1;
    ssize_t got = 0;
    do got = ::pread(input->fd_, buffer, size_t(length), input->position_);
    while (got < 0 && errno == EINTR);
    if (got > 0) input->position_ += got;
    return got;
}

gint64 VipsInput::seek(VipsSourceCustom* /*source*/, gint64 offset, int whence, VipsInput* input) {
    struct stat status{};
    if (whence == SEEK_CUR) offset += input->position_;
    if (whence == SEEK_END) {
        if (::fstat(input->fd_, &status) != 0) return -1;
        offset += status.st_size;
    }
    if (offset < 0) return -1;
    return input->position_ = off_t(offset);
}

} // namespace loftmere

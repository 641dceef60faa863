#include "CleanerCore/Scanning/Photos/VipsInput.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace loftmere {

VipsInput::VipsInput(const VipsLibrary& vips, const RegularFile& file, const FS::CancelCheck& isCancelled)
    : vips_(vips), file_(file), isCancelled_(isCancelled), source_(vips.sourceCustomNew()) {
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
    // One byte more than allowed tells a file that goes on from one that ends.
    const auto wanted = size_t(std::min<int64_t>(length, input->allowance_ + 1));
    const auto got = input->file_.read(input->position_, {static_cast<std::byte*>(buffer), wanted});
    if (!got || int64_t(*got) > input->allowance_) return -1;
    input->allowance_ -= int64_t(*got);
    input->position_ += int64_t(*got);
    return gint64(*got);
}

gint64 VipsInput::seek(VipsSourceCustom* /*source*/, gint64 offset, int whence, VipsInput* input) {
    if (whence == SEEK_CUR) offset += input->position_;
    if (whence == SEEK_END) offset += input->file_.size();
    if (offset < 0) return -1;
    return input->position_ = offset;
}

} // namespace loftmere

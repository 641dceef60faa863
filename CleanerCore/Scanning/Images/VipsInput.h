#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Images/VipsLibrary.h"

#include <sys/types.h>

namespace loftmere {

// An open file as a source of libvips, which asks it for bytes. Reads with pread and never maps the file,
// since one that is cut short meanwhile would kill the process. Once cancelled, every read fails, and with it
// the decoding.
class VipsInput {
public:
    VipsInput(const VipsLibrary& vips, int fd, const FS::CancelCheck& isCancelled);
    ~VipsInput();
    VipsInput(const VipsInput&) = delete;
    VipsInput& operator=(const VipsInput&) = delete;

    // Null when there is no memory for one. Must not be used by anyone after this object's end.
    VipsSource* source() const { return reinterpret_cast<VipsSource*>(source_); }

private:
    static gint64 read(VipsSourceCustom* source, void* buffer, gint64 length, VipsInput* input);
    static gint64 seek(VipsSourceCustom* source, gint64 offset, int whence, VipsInput* input);

    const VipsLibrary& vips_;
    int fd_;
    const FS::CancelCheck& isCancelled_;
    off_t position_ = 0;
    VipsSourceCustom* source_;
};

} // namespace loftmere

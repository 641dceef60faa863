#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/VipsLibrary.h"

namespace loftmere {

// An open file as a source of libvips, which asks it for bytes. The file is never mapped,
// since one that is cut short meanwhile would kill the process. Once cancelled, every read fails, and with it
// the decoding.
class VipsInput {
public:
    VipsInput(const VipsLibrary& vips, const RegularFile& file, const FS::CancelCheck& isCancelled);
    ~VipsInput();
    VipsInput(const VipsInput&) = delete;
    VipsInput& operator=(const VipsInput&) = delete;

    // Null when there is no memory for one. Must not be used by anyone after this object's end.
    VipsSource* source() const { return reinterpret_cast<VipsSource*>(source_); }

    // How many bytes may be read from now on, none until this is told; to read more fails. The library
    // believes whatever lengths a file names, and keeps as much of it in memory.
    void allow(int64_t bytes) { allowance_ = bytes; }

private:
    static gint64 read(VipsSourceCustom* source, void* buffer, gint64 length, VipsInput* input);
    static gint64 seek(VipsSourceCustom* source, gint64 offset, int whence, VipsInput* input);

    const VipsLibrary& vips_;
    const RegularFile& file_;
    const FS::CancelCheck& isCancelled_;
    int64_t position_ = 0;
    int64_t allowance_ = 0;
    VipsSourceCustom* source_;
};

} // namespace loftmere

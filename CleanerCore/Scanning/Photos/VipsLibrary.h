#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"

#include <vips/vips.h>

#include <cstdint>

namespace loftmere {

// libvips, and the few of its functions that are used. It is loaded when the first picture needs it and not
// linked, because it loads a hundred other libraries, which would add some 60 ms to every start of the
// program.
struct VipsLibrary {
    decltype(&::vips_init) init;
    decltype(&::vips_cache_set_max) cacheSetMax;
    decltype(&::vips_concurrency_set) concurrencySet;
    decltype(&::vips_operation_block_set) operationBlockSet;
    decltype(&::vips_error_clear) errorClear;
    decltype(&::vips_thread_shutdown) threadShutdown;
    decltype(&::vips_source_custom_new) sourceCustomNew;
    decltype(&::vips_pngload_source) pngLoad;
    decltype(&::vips_tiffload_source) tiffLoad;
    decltype(&::vips_webpload_source) webpLoad;
    decltype(&::vips_heifload_source) heifLoad;
    decltype(&::vips_gifload_source) gifLoad;
    decltype(&::vips_format_sizeof) formatSizeof;
    decltype(&::vips_image_get_orientation) imageGetOrientation;
    decltype(&::vips_image_get_typeof) imageGetTypeof;
    decltype(&::vips_colourspace_issupported) colourspaceIsSupported;
    decltype(&::vips_colourspace) colourspace;
    decltype(&::vips_region_new) regionNew;
    decltype(&::vips_region_prepare) regionPrepare;
    decltype(&::g_signal_connect_data) signalConnectData;
    decltype(&::g_object_unref) objectUnref;
    decltype(&::g_log_set_handler) logSetHandler;

    // Loads the library at the first call and sets it up: no cache, no threads of its own, no loaders but
    // those above, no output. Null where it is missing. Any thread.
    static const VipsLibrary* get();
};

// An open file as a data source for libvips. The file is never mapped, since a file that is cut short
// meanwhile would kill the process. Once cancelled, every read fails, and so does the decoding.
class VipsInput {
public:
    VipsInput(const VipsLibrary& vips, const RegularFile& file, const FS::CancelCheck& isCancelled);
    ~VipsInput();
    VipsInput(const VipsInput&) = delete;
    VipsInput& operator=(const VipsInput&) = delete;

    // Null when there is no memory for one. Must not be used after this object is gone.
    VipsSource* source() const { return reinterpret_cast<VipsSource*>(source_); }

    // How many bytes may be read from now on; none before the first call. Reading more fails. The library
    // believes the lengths that a file states, and would hold that much of it in memory.
    void allow(int64_t bytes) { allowance_ = bytes; }

    // Whether reading has failed because more was asked for.
    bool isOverAllowance() const { return isOverAllowance_; }

private:
    static gint64 read(VipsSourceCustom* source, void* buffer, gint64 length, VipsInput* input);
    static gint64 seek(VipsSourceCustom* source, gint64 offset, int whence, VipsInput* input);

    const VipsLibrary& vips_;
    const RegularFile& file_;
    const FS::CancelCheck& isCancelled_;
    int64_t position_ = 0;
    int64_t allowance_ = 0;
    bool isOverAllowance_ = false;
    VipsSourceCustom* source_;
};

} // namespace loftmere

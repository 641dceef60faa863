#pragma once

#include <vips/vips.h>

namespace loftmere {

// libvips and the few functions used of it. It is loaded at the first picture that needs it and not linked:
// it brings a hundred other libraries along, which would cost every start of the program some 60
// milliseconds.
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

    // Loads and sets up the library at the first call: no cache, no threads of its own, no other loaders than
    // those above, nothing printed. Null where it is missing. Any thread.
    static const VipsLibrary* get();
};

} // namespace loftmere

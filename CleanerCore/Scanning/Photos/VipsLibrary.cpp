#include "CleanerCore/Scanning/Photos/VipsLibrary.h"

#include "CleanerCore/Platform/SharedLibrary.h"

#include <array>
#include <optional>

namespace loftmere {

namespace {

constexpr int binaryVersion = 42; // of all of libvips 8

// The loaders that foreign files may reach, below "VipsForeignLoad", which is blocked with all the rest.
constexpr std::array<const char*, 5> loaders{"VipsForeignLoadPng", "VipsForeignLoadTiff",
                                             "VipsForeignLoadWebp", "VipsForeignLoadHeif",
                                             "VipsForeignLoadNsgif"};

bool findAll(const SharedLibrary& library, VipsLibrary& vips) {
    return library.find("vips_init", vips.init) && //
           library.find("vips_cache_set_max", vips.cacheSetMax) &&
           library.find("vips_concurrency_set", vips.concurrencySet) &&
           library.find("vips_operation_block_set", vips.operationBlockSet) &&
           library.find("vips_error_clear", vips.errorClear) &&
           library.find("vips_thread_shutdown", vips.threadShutdown) &&
           library.find("vips_source_custom_new", vips.sourceCustomNew) &&
           library.find("vips_pngload_source", vips.pngLoad) &&
           library.find("vips_tiffload_source", vips.tiffLoad) &&
           library.find("vips_webpload_source", vips.webpLoad) &&
           library.find("vips_heifload_source", vips.heifLoad) &&
           library.find("vips_gifload_source", vips.gifLoad) &&
           library.find("vips_format_sizeof", vips.formatSizeof) &&
           library.find("vips_image_get_orientation", vips.imageGetOrientation) &&
           library.find("vips_image_get_typeof", vips.imageGetTypeof) &&
           library.find("vips_colourspace_issupported", vips.colourspaceIsSupported) &&
           library.find("vips_colourspace", vips.colourspace) &&
           library.find("vips_region_new", vips.regionNew) &&
           library.find("vips_region_prepare", vips.regionPrepare) &&
           library.find("g_signal_connect_data", vips.signalConnectData) &&
           library.find("g_object_unref", vips.objectUnref) &&
           library.find("g_log_set_handler", vips.logSetHandler);
}

void sayNothing(const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* /*message*/,
                gpointer /*data*/) {}

void setUp(const VipsLibrary& vips) {
    vips.logSetHandler("VIPS", GLogLevelFlags(G_LOG_LEVEL_MASK | G_LOG_FLAG_RECURSION), sayNothing, nullptr);
    vips.cacheSetMax(0);
    vips.concurrencySet(1);
    vips.operationBlockSet("VipsForeignLoad", TRUE);
    for (const char* loader : loaders) vips.operationBlockSet(loader, FALSE);
}

std::optional<VipsLibrary> load() {
    VipsLibrary vips{};
    const SharedLibrary library = SharedLibrary::load("libvips", binaryVersion);
    if (!library || !findAll(library, vips) || vips.init("loftmere") != 0) return std::nullopt;
    setUp(vips);
    return vips;
}

} // namespace

const VipsLibrary* VipsLibrary::get() {
    static const std::optional<VipsLibrary> library = load();
    return library ? &*library : nullptr;
}

} // namespace loftmere

#include "CleanerCore/Scanning/Photos/VipsLibrary.h"

#include "CleanerCore/Platform/System.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>

namespace loftmere {

namespace {

constexpr int binaryVersion = 42; // of every libvips 8

// The loaders that files may reach. All others below "VipsForeignLoad" are blocked.
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
    // One byte more than allowed, to tell a file that goes on from one that ends.
    const auto wanted = size_t(std::min<int64_t>(length, input->allowance_ + 1));
    const auto got = input->file_.read(input->position_, {static_cast<std::byte*>(buffer), wanted});
    if (!got) return -1;
    if (int64_t(*got) > input->allowance_) {
        input->isOverAllowance_ = true;
        return -1;
    }
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

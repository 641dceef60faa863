#include "CleanerCore/Scanning/Photos/Thumbnail.h"
#include "CleanerCore/Scanning/Photos/VipsLibrary.h"
#include "CleanerCore/Support/Crew.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace loftmere {

namespace {

constexpr int64_t mebi = int64_t{1} << 20;

// The limits of what is decoded, in bytes except for the pixels. A small file that claims a vast picture, or
// a file that is long but empty, must cost seconds and not the machine. A picture that comes in rows needs
// memory for a few of them only; others are held whole.
constexpr int64_t mostPixelsHeld = 64'000'000;
constexpr int64_t largestPictureHeld = 320 * mebi;
constexpr int64_t largestFileHeld = 128 * mebi;
constexpr int64_t largestFile = 768 * mebi;
constexpr int64_t mostBesidePicture = 64 * mebi; // profiles, previews, layers
constexpr int64_t longestRow = 4 * mebi;
constexpr int64_t stripBytes = mebi;

// What is larger is decoded one at a time. A camera's picture that is held takes some 40 MiB.
constexpr int64_t largestFileAtOnce = 32 * mebi;
constexpr int64_t largestPictureAtOnce = 80 * mebi;

struct Loader {
    ImageKind kind;
    decltype(VipsLibrary::pngLoad) VipsLibrary::* load;
    bool isHeldWhole; // and is decoded in one call that nothing can interrupt
};

constexpr std::array<Loader, 5> loaders{{
    {ImageKind::png, &VipsLibrary::pngLoad, false},
    {ImageKind::tiff, &VipsLibrary::tiffLoad, false},
    {ImageKind::webp, &VipsLibrary::webpLoad, true},
    {ImageKind::heif, &VipsLibrary::heifLoad, true},
    {ImageKind::gif, &VipsLibrary::gifLoad, true},
}};

struct Unref {
    const VipsLibrary* vips;
    void operator()(gpointer object) const { vips->objectUnref(object); }
};
using Image = std::unique_ptr<VipsImage, Unref>;
using Region = std::unique_ptr<VipsRegion, Unref>;

bool isPlain(const VipsImage& image) {
    const bool isUsual = image.Type == VIPS_INTERPRETATION_sRGB || image.Type == VIPS_INTERPRETATION_B_W;
    return isUsual && image.BandFmt == VIPS_FORMAT_UCHAR && image.Coding == VIPS_CODING_NONE;
}

// The right to decode something that takes much memory. One thread of the program has it at a time. A
// decoding that was abandoned but still runs keeps it until it ends.
class DecodingTurn {
public:
    DecodingTurn() = default;
    ~DecodingTurn() {
        if (isHeld_) isTaken = false;
    }
    DecodingTurn(const DecodingTurn&) = delete;
    DecodingTurn& operator=(const DecodingTurn&) = delete;

    // Waits for it, unless it is held here already. False when cancelled meanwhile.
    bool take(const FS::CancelCheck& isCancelled) {
        while (!isHeld_ && isTaken.exchange(true)) {
            if (isCancelled && isCancelled()) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        isHeld_ = true;
        return true;
    }

private:
    // Not a mutex: a waiting thread must notice a cancel, and an abandoned decoding may still run when the
    // program ends and its objects are destroyed.
    static inline std::atomic<bool> isTaken = false;

    bool isHeld_ = false;
};

// One decoding on the calling thread. libvips computes the strips that it is asked for.
class Decoding {
public:
    Decoding(const VipsLibrary& vips, const RegularFile& file, const FS::CancelCheck& isCancelled)
        : vips_(vips), file_(file), isCancelled_(isCancelled), input_(vips, file, isCancelled) {}

    ThumbnailResult read(const Loader& loader) {
        const int64_t size = file_.size();
        // To open a file that is held reads all of it into memory, and kills the program when that runs out.
        if (size > (loader.isHeldWhole ? largestFileHeld : largestFile)) return tooLarge();
        if (size > largestFileAtOnce && !turn_.take(isCancelled_)) return none();
        input_.allow(mostBesidePicture + (loader.isHeldWhole ? size : 0));
        const Image image = open(loader);
        if (!image) return none();
        if (!isAffordable(*image, loader)) return tooLarge();
        if (isHeavy(*image, loader) && !turn_.take(isCancelled_)) return none();
        input_.allow(mostBesidePicture + 2 * pictureBytes(*image));
        const Image plain = isPlain(*image) ? nullptr : converted(image.get());
        if (!isPlain(*image) && !plain) return none();
        const auto grey = reduced(plain ? plain.get() : image.get());
        if (!grey) return none();
        return Thumbnail{.image = turnedUpright(*grey, vips_.imageGetOrientation(image.get())),
                         .pixelCount = int64_t{image->Xsize} * image->Ysize};
    }

private:
    static ThumbnailResult tooLarge() { return std::unexpected(NoThumbnail::tooLarge); }

    ThumbnailResult none() const {
        if (input_.isOverAllowance()) return tooLarge();
        return std::unexpected(NoThumbnail::noPicture);
    }

    Image owned(VipsImage* image) const { return Image(image, Unref{&vips_}); }

    Image open(const Loader& loader) const {
        VipsImage* image = nullptr;
        if (input_.source() == nullptr) return owned(nullptr);
        (vips_.*loader.load)(input_.source(), &image, "access", VIPS_ACCESS_SEQUENTIAL, "fail_on",
                             VIPS_FAIL_ON_TRUNCATED, static_cast<void*>(nullptr));
        return owned(image);
    }

    int64_t rowBytes(const VipsImage& image) const {
        return int64_t{image.Xsize} * image.Bands * int64_t(vips_.formatSizeof(image.BandFmt));
    }

    int64_t pictureBytes(const VipsImage& image) const { return rowBytes(image) * image.Ysize; }

    bool isHeld(const VipsImage& image, const Loader& loader) const {
        return loader.isHeldWhole || vips_.imageGetTypeof(&image, "interlaced") != 0;
    }

    bool isAffordable(const VipsImage& image, const Loader& loader) const {
        const int64_t pixels = int64_t{image.Xsize} * image.Ysize;
        if (rowBytes(image) > longestRow) return false;
        if (!isHeld(image, loader)) return pixels <= mostPixels;
        return pixels <= mostPixelsHeld && pictureBytes(image) <= largestPictureHeld;
    }

    bool isHeavy(const VipsImage& image, const Loader& loader) const {
        return isHeld(image, loader) && pictureBytes(image) > largestPictureAtOnce;
    }

    // 16 bits, floating point, inks and the like as eight-bit colour.
    Image converted(VipsImage* image) const {
        VipsImage* colors = nullptr;
        if (vips_.colourspaceIsSupported(image) == FALSE) return owned(nullptr);
        vips_.colourspace(image, &colors, VIPS_INTERPRETATION_sRGB, static_cast<void*>(nullptr));
        Image result = owned(colors);
        if (result && !isPlain(*result)) result.reset();
        return result;
    }

    std::optional<GreyImage> reduced(VipsImage* image) const {
        const Region region(vips_.regionNew(image), Unref{&vips_});
        if (!region) return std::nullopt;
        AreaReducer reducer = AreaReducer::fitting(image->Xsize, image->Ysize, thumbnailSide);
        std::vector<uint8_t> grey(size_t(image->Xsize));
        const int height = int(std::clamp<int64_t>(stripBytes / rowBytes(*image), 1, 64));
        for (int top = 0; top < image->Ysize; top += height) {
            if (isCancelled_ && isCancelled_()) return std::nullopt;
            const VipsRect strip{0, top, image->Xsize, std::min(height, image->Ysize - top)};
            if (vips_.regionPrepare(region.get(), &strip) != 0) return std::nullopt;
            addStrip(*region, *image, strip, grey, reducer);
        }
        return reducer.result();
    }

    static void addStrip(const VipsRegion& region, const VipsImage& image, const VipsRect& strip,
                         std::vector<uint8_t>& grey, AreaReducer& reducer) {
        for (int y = strip.top; y < strip.top + strip.height; ++y) {
            const uint8_t* row = region.data + ptrdiff_t{y - region.valid.top} * region.bpl;
            colorsToGrey(row, grey.size(), size_t(image.Bands), grey.data());
            reducer.addRow(grey.data());
        }
    }

    const VipsLibrary& vips_;
    const RegularFile& file_;
    const FS::CancelCheck& isCancelled_;
    DecodingTurn turn_;
    VipsInput input_;
};

ThumbnailResult decoded(const VipsLibrary& vips, const Loader& loader, const RegularFile& file,
                        const FS::CancelCheck& isCancelled) {
    auto thumbnail = Decoding(vips, file, isCancelled).read(loader);
    // The library keeps failure messages, and buffers for each thread, until it is told to drop them.
    vips.errorClear();
    vips.threadShutdown();
    return thumbnail;
}

} // namespace

ThumbnailResult vipsThumbnail(const RegularFile& file, ImageKind kind, const FS::CancelCheck& isCancelled) {
    const auto none = std::unexpected(NoThumbnail::noPicture);
    const VipsLibrary* vips = VipsLibrary::get();
    const auto* loader = std::ranges::find(loaders, kind, &Loader::kind);
    if (vips == nullptr || loader == loaders.end()) return none;
    if (!loader->isHeldWhole) return decoded(*vips, *loader, file, isCancelled);
    auto own = file.duplicate();
    if (!own) return none;
    const auto owned = std::make_shared<RegularFile>(std::move(*own));
    const auto thumbnail =
        unlessCancelled<ThumbnailResult>(isCancelled, [=](const FS::CancelCheck& isAbandoned) {
            return std::optional(decoded(*vips, *loader, *owned, isAbandoned));
        });
    return thumbnail.value_or(none);
}

} // namespace loftmere

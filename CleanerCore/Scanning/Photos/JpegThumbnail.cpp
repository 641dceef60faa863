#include "CleanerCore/Scanning/Photos/JpegDecoding.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"

#include <jerror.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <string_view>
#include <utility>

namespace loftmere {

namespace {

constexpr size_t blockSize = 65536;

bool belongsToData(int code) {
    return code == 0 || (code >= JPEG_RST0 && code < JPEG_RST0 + 8);
}

} // namespace

JpegInput::JpegInput(const RegularFile& file, const FS::CancelCheck& isCancelled)
    : jpeg_source_mgr{}, file_(file), isCancelled_(isCancelled), block_(blockSize) {
    init_source = [](j_decompress_ptr) {};
    fill_input_buffer = fillForLibrary;
    skip_input_data = skipForLibrary;
    resync_to_restart = jpeg_resync_to_restart;
    term_source = [](j_decompress_ptr) {};
}

bool JpegInput::refill() {
    if (allowance_ <= 0 || isCancelled()) return false;
    const size_t got = file_.read(position_, std::as_writable_bytes(std::span(block_))).value_or(0);
    position_ += int64_t(got);
    allowance_ -= int64_t(got);
    next_input_byte = block_.data();
    bytes_in_buffer = got;
    return got > 0;
}

void JpegInput::skip(size_t count) {
    const size_t held = std::min(count, bytes_in_buffer);
    next_input_byte += held;
    bytes_in_buffer -= held;
    position_ += int64_t(count - held);
}

int JpegInput::codeAfterMark() {
    int code = 0xFF;
    while (code == 0xFF) code = next(); // a code may follow any number of them
    return code;
}

size_t JpegInput::copyData(uint8_t* target, size_t room) {
    size_t copied = 0;
    while (copied < room && !marker_) {
        if (bytes_in_buffer == 0 && !refill()) {
            marker_ = -1;
            break;
        }
        const size_t most = std::min(room - copied, bytes_in_buffer);
        const void* found = std::memchr(next_input_byte, 0xFF, most);
        const size_t plain =
            found == nullptr ? most : size_t(static_cast<const uint8_t*>(found) - next_input_byte);
        std::memcpy(target + copied, next_input_byte, plain);
        copied += plain;
        skip(plain);
        if (found == nullptr) continue;
        const int code = codeAfterMark();
        if (code == 0)
            target[copied++] = 0xFF;
        else
            marker_ = code;
    }
    return copied;
}

int JpegInput::nextMarker() {
    if (marker_) return *std::exchange(marker_, std::nullopt);
    while (bytes_in_buffer > 0 || refill()) {
        const void* found = std::memchr(next_input_byte, 0xFF, bytes_in_buffer);
        if (found == nullptr) {
            bytes_in_buffer = 0;
            continue;
        }
        skip(size_t(static_cast<const uint8_t*>(found) - next_input_byte));
        const int code = codeAfterMark();
        if (!belongsToData(code)) return code;
    }
    return -1;
}

bool JpegInput::reachesEnd() {
    while (true) {
        const int code = nextMarker();
        if (code < 0 || code == JPEG_EOI) return code == JPEG_EOI;
        if (belongsToData(code)) continue;
        const int high = next();
        const int low = next();
        if (low < 0) return false;
        const auto length = size_t(high << 8 | low);
        if (length > 2) skip(length - 2);
    }
}

// Missing data is not made up: a file that is cut short counts as damaged.
boolean JpegInput::fillForLibrary(j_decompress_ptr decoder) {
    auto* input = static_cast<JpegInput*>(decoder->src);
    if (!input->refill()) decoder->err->error_exit(reinterpret_cast<j_common_ptr>(decoder));
    return TRUE;
}

void JpegInput::skipForLibrary(j_decompress_ptr decoder, long count) {
    if (count > 0) static_cast<JpegInput*>(decoder->src)->skip(size_t(count));
}

namespace {

constexpr int exifMarker = JPEG_APP0 + 1;
constexpr unsigned exifBytesKept = 4096; // the orientation is near the start
constexpr std::string_view exifName{"Exif\0\0", 6};

// How much libjpeg may hold of a picture in several scans, and how many scans it may read. A file can claim
// any size, and can repeat scans that take a few bytes each.
constexpr int64_t largestCoefficients = int64_t{128} << 20;
constexpr int mostScans = 100;

// How much may be read to find a picture of any size, in a file that may be long but empty.
constexpr int64_t largestFile = int64_t{512} << 20;
constexpr int64_t mostBesidePicture = int64_t{32} << 20;

struct ErrorManager : jpeg_error_mgr {
    std::jmp_buf escape;
};

[[noreturn]] void leave(j_common_ptr decoder) {
    std::longjmp(static_cast<ErrorManager*>(decoder->err)->escape, 1);
}

// Of the library's many warnings, the one for data that ends before the picture does. The library would go on
// in plain grey.
void leaveWhenCutShort(j_common_ptr decoder, int level) {
    if (level < 0 && decoder->err->msg_code == JWRN_HIT_MARKER) leave(decoder);
}

// Runs for each row: a little data can make many rows, during which no input is asked for.
void stopWhenCancelledOrEndless(j_common_ptr common) {
    const auto* decoder = reinterpret_cast<j_decompress_ptr>(common);
    const auto* input = static_cast<const JpegInput*>(decoder->src);
    if (decoder->input_scan_number > mostScans || input->isCancelled()) leave(common);
}

// libjpeg, with its jumps on failure turned into results.
class JpegDecoder {
public:
    explicit JpegDecoder(JpegInput& input) : input_(input) {
        decoder_.err = jpeg_std_error(&errors_);
        errors_.error_exit = leave;
        errors_.emit_message = leaveWhenCutShort;
        errors_.output_message = [](j_common_ptr) {};
        progress_.progress_monitor = stopWhenCancelledOrEndless;
    }
    ~JpegDecoder() { jpeg_destroy_decompress(&decoder_); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    ThumbnailResult read(JpegMeans means) {
        input_.allow(mostBesidePicture);
        if (!guarded([&] { readHeader(); })) return std::unexpected(reason());
        const int64_t pixels = int64_t{decoder_.image_width} * decoder_.image_height;
        if (pixels > mostPixels) return std::unexpected(NoThumbnail::tooLarge);
        input_.allow(mostBesidePicture + 2 * pixels * decoder_.num_components);
        auto image = readImage(means);
        if (!image) return std::unexpected(reason());
        return Thumbnail{.image = turnedUpright(*image, orientation()), .pixelCount = pixels};
    }

    // Whether libjpeg may be able to read what our own reading could not.
    bool deservesAnotherTry() const { return deservesAnotherTry_; }

private:
    // Runs calls into libjpeg. False when one failed. An error jumps here over the frames in between, so
    // `calls` must not create anything that needs to be destroyed.
    template <class Calls> bool guarded(const Calls& calls) {
        if (setjmp(errors_.escape) != 0) return false; // NOLINT(cert-err52-cpp): the library's only way
        calls();
        return true;
    }

    void readHeader() {
        jpeg_create_decompress(&decoder_);
        decoder_.src = &input_;
        decoder_.progress = &progress_;
        jpeg_save_markers(&decoder_, exifMarker, exifBytesKept);
        jpeg_read_header(&decoder_, TRUE);
    }

    NoThumbnail reason() const {
        const bool isTooLarge =
            isTooLarge_ || input_.isOverAllowance() || decoder_.input_scan_number > mostScans;
        return isTooLarge ? NoThumbnail::tooLarge : NoThumbnail::noPicture;
    }

    // Of a progressive file the means are all that is read: for the rest, libjpeg would hold the coefficients
    // of the whole picture, 3 bytes a pixel.
    std::optional<GreyImage> readImage(JpegMeans means) {
        const auto scale = reduction();
        if (scale == 8 && canReadMeans(decoder_) && (means == JpegMeans::read || decoder_.progressive_mode)) {
            auto image = readMeans(decoder_, input_, thumbnailSide);
            deservesAnotherTry_ = !image && !decoder_.progressive_mode && !input_.isCancelled();
            return image;
        }
        isTooLarge_ = jpeg_has_multiple_scans(&decoder_) && coefficientBytes() > largestCoefficients;
        if (isTooLarge_) return std::nullopt;
        if (!guarded([&] { start(scale); })) return std::nullopt;
        std::vector<uint8_t> row(size_t(decoder_.output_width) * size_t(decoder_.output_components));
        AreaReducer reducer =
            AreaReducer::fitting(int(decoder_.output_width), int(decoder_.output_height), thumbnailSide);
        JSAMPROW target = row.data();
        while (decoder_.output_scanline < decoder_.output_height) {
            if (!guarded([&] { jpeg_read_scanlines(&decoder_, &target, 1); })) return std::nullopt;
            if (decoder_.output_components == 4) {
                inksToGrey(row.data(), decoder_.output_width, hasInvertedInks(), row.data());
            }
            reducer.addRow(row.data());
        }
        return reducer.result();
    }

    // The largest reduction that costs the decoder nothing and still leaves enough for a thumbnail.
    unsigned reduction() const {
        const unsigned longer = std::max(decoder_.image_width, decoder_.image_height);
        for (const unsigned scale : {8U, 4U, 2U}) {
            if (longer / scale >= unsigned(thumbnailSide)) return scale;
        }
        return 1;
    }

    void start(unsigned scale) {
        decoder_.scale_num = 1;
        decoder_.scale_denom = scale;
        decoder_.out_color_space = decoder_.num_components == 4 ? JCS_CMYK : JCS_GRAYSCALE;
        decoder_.do_fancy_upsampling = FALSE;
        decoder_.do_block_smoothing = FALSE;
        decoder_.dct_method = JDCT_IFAST;
        jpeg_start_decompress(&decoder_);
    }

    int64_t coefficientBytes() const {
        int64_t bytes = 0;
        for (int i = 0; i < decoder_.num_components; ++i) {
            const jpeg_component_info& info = decoder_.comp_info[i];
            bytes += int64_t{info.width_in_blocks} * info.height_in_blocks * int64_t{sizeof(JBLOCK)};
        }
        return bytes;
    }

    // Programs that write the Adobe marker also write inks inverted, 255 for none.
    bool hasInvertedInks() const { return decoder_.saw_Adobe_marker != FALSE; }

    int orientation() const {
        for (auto* marker = decoder_.marker_list; marker != nullptr; marker = marker->next) {
            const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
            if (!data.starts_with(exifName)) continue;
            return exifOrientation(std::span(marker->data, marker->data_length).subspan(exifName.size()));
        }
        return uprightOrientation;
    }

    JpegInput& input_;
    jpeg_decompress_struct decoder_{};
    ErrorManager errors_{};
    jpeg_progress_mgr progress_{};
    bool isTooLarge_ = false;
    bool deservesAnotherTry_ = false;
};

} // namespace

ThumbnailResult jpegThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled, JpegMeans means) {
    if (file.size() > largestFile) return std::unexpected(NoThumbnail::tooLarge);
    JpegInput input(file, isCancelled);
    JpegDecoder decoder(input);
    auto thumbnail = decoder.read(means);
    if (!decoder.deservesAnotherTry()) return thumbnail;
    JpegInput again(file, isCancelled);
    return JpegDecoder(again).read(JpegMeans::leave);
}

} // namespace loftmere

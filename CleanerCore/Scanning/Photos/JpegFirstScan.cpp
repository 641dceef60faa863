#include "CleanerCore/Scanning/Photos/JpegFirstScan.h"

#include "CleanerCore/Scanning/Photos/AreaReducer.h"
#include "CleanerCore/Scanning/Photos/JpegHuffman.h"

#include <algorithm>

namespace loftmere {

namespace {

// One component of the scan: how many of its blocks stand in a unit, and the brightness up to which each
// counts.
struct Component {
    const jpeg_component_info* info;
    JpegHuffmanTable table;
    int columns;
    int rows;
    int32_t last = 0;
};

// The table of a number that the file tells; libjpeg checks those only when it decodes itself.
template <class Table, size_t count> const Table* named(Table* const (&tables)[count], int number) {
    return number >= 0 && size_t(number) < count ? tables[number] : nullptr;
}

class FirstScan {
public:
    FirstScan(const jpeg_decompress_struct& decoder, JpegInput& input, int side)
        : decoder_(decoder),
          bits_(input),
          luma_(*decoder.comp_info),
          reducer_(AreaReducer::fitting(int(luma_.width_in_blocks), int(luma_.height_in_blocks), side)) {}

    // False when the data is damaged.
    bool read() {
        if (!prepare()) return false;
        for (unsigned row = 0; row < unitRows_; ++row) {
            for (unsigned unit = 0; unit < unitsPerRow_; ++unit) {
                if (!readUnit(unit)) return false;
            }
            passOn(row);
        }
        return true;
    }

    const GreyImage& image() const { return reducer_.result(); }

private:
    // A scan of one component goes block by block; one of several in units that hold, of each component, as
    // many blocks as its sampling factors say.
    bool prepare() {
        const bool single = decoder_.comps_in_scan == 1;
        for (int i = 0; i < decoder_.comps_in_scan; ++i) {
            const jpeg_component_info* info = decoder_.cur_comp_info[i];
            const JHUFF_TBL* codes = named(decoder_.dc_huff_tbl_ptrs, info->dc_tbl_no);
            if (codes == nullptr) return false;
            components_.push_back({.info = info,
                                   .table = JpegHuffmanTable(*codes),
                                   .columns = single ? 1 : info->h_samp_factor,
                                   .rows = single ? 1 : info->v_samp_factor});
            if (!components_.back().table.isValid()) return false;
        }
        const auto unitsOf = [](unsigned length, int factor) {
            const unsigned unit = 8 * unsigned(factor);
            return (length + unit - 1) / unit;
        };
        unitsPerRow_ =
            single ? luma_.width_in_blocks : unitsOf(decoder_.image_width, decoder_.max_h_samp_factor);
        unitRows_ =
            single ? luma_.height_in_blocks : unitsOf(decoder_.image_height, decoder_.max_v_samp_factor);
        columns_ = single ? 1 : size_t(luma_.h_samp_factor);
        rows_ = single ? 1 : size_t(luma_.v_samp_factor);
        width_ = unitsPerRow_ * columns_;
        brightness_.resize(width_ * rows_);
        const JQUANT_TBL* steps = named(decoder_.quant_tbl_ptrs, luma_.quant_tbl_no);
        if (steps != nullptr) step_ = int64_t{steps->quantval[0]} << decoder_.Al;
        return steps != nullptr;
    }

    bool readUnit(size_t unit) {
        if (decoder_.restart_interval != 0 && unitsRead_ > 0 && unitsRead_ % decoder_.restart_interval == 0) {
            if (!bits_.restart()) return false;
            for (Component& component : components_) component.last = 0;
        }
        ++unitsRead_;
        for (Component& component : components_) {
            for (int block = 0; block < component.columns * component.rows; ++block) {
                const auto change = component.table.readDifference(bits_);
                if (!change) return false;
                component.last = int32_t(uint32_t(component.last) + uint32_t(*change));
                if (component.info == &luma_) keep(unit, size_t(block), component.last);
            }
        }
        return true;
    }

    // A block's first coefficient is eight times its mean, in steps, about the middle of the range.
    void keep(size_t unit, size_t block, int32_t coefficient) {
        const int64_t mean = ((coefficient * step_ + 4) >> 3) + 128;
        const size_t column = unit * columns_ + block % columns_;
        brightness_[block / columns_ * width_ + column] = uint8_t(std::clamp<int64_t>(mean, 0, 255));
    }

    // Blocks that only fill up the last unit are no part of the picture.
    void passOn(size_t unitRow) {
        for (size_t row = 0; row < rows_; ++row) {
            if (unitRow * rows_ + row < luma_.height_in_blocks)
                reducer_.addRow(brightness_.data() + row * width_);
        }
    }

    const jpeg_decompress_struct& decoder_;
    JpegBits bits_;
    const jpeg_component_info& luma_;
    AreaReducer reducer_;
    std::vector<Component> components_;
    std::vector<uint8_t> brightness_; // one row of units
    unsigned unitsPerRow_ = 0;
    unsigned unitRows_ = 0;
    size_t unitsRead_ = 0;
    size_t columns_ = 1; // blocks of brightness in a unit
    size_t rows_ = 1;
    size_t width_ = 0;
    int64_t step_ = 1;
};

} // namespace

bool canReadFirstScan(const jpeg_decompress_struct& decoder) {
    const bool hasLuma = decoder.jpeg_color_space == JCS_GRAYSCALE || decoder.jpeg_color_space == JCS_YCbCr;
    return decoder.progressive_mode && !decoder.arith_code && hasLuma && decoder.Ss == 0 && decoder.Se == 0 &&
           decoder.Ah == 0 && decoder.Al >= 0 && decoder.Al <= 13 && decoder.comps_in_scan > 0 &&
           decoder.cur_comp_info[0] == decoder.comp_info;
}

std::optional<GreyImage> readFirstScan(const jpeg_decompress_struct& decoder, JpegInput& input, int side) {
    FirstScan scan(decoder, input, side);
    if (!scan.read() || !input.reachesEnd()) return std::nullopt;
    return scan.image();
}

} // namespace loftmere

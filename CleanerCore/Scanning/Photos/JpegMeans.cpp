#include "CleanerCore/Scanning/Photos/JpegCodes.h"

#include <algorithm>
#include <map>
#include <utility>

namespace loftmere {

namespace {

// The table with a number that is in the file. libjpeg checks such numbers only when it decodes itself.
template <class Table, size_t count> const Table* named(Table* const (&tables)[count], int number) {
    return number >= 0 && size_t(number) < count ? tables[number] : nullptr;
}

// Codes by the number of their table. Several components may use the same.
template <class Codes> class CodeTables {
public:
    // Null when there is no such table or no code in it.
    template <size_t count> const Codes* find(JHUFF_TBL* const (&tables)[count], int number) {
        const JHUFF_TBL* table = named(tables, number);
        if (table == nullptr) return nullptr;
        const Codes& codes = codes_.try_emplace(number, *table).first->second;
        return codes.isValid() ? &codes : nullptr;
    }

private:
    std::map<int, Codes> codes_;
};

// One block of each unit.
struct Block {
    const DifferenceCodes* differences;
    const DetailCodes* details; // null where the scan has none
    size_t component;
    size_t place; // in the row of units, if the block is of the component that shows brightness
};

// Reads a scan that has the mean of each block.
class MeansScan {
public:
    MeansScan(const jpeg_decompress_struct& decoder, JpegInput& input, int side)
        : decoder_(decoder),
          input_(input),
          bits_(input),
          luma_(*decoder.comp_info),
          isSingle_(decoder.comps_in_scan == 1),
          reducer_(AreaReducer::fitting(int(luma_.width_in_blocks), int(luma_.height_in_blocks), side)) {}

    // False when the data is damaged or cut short.
    bool read() {
        if (!prepare()) return false;
        for (unsigned row = 0; row < unitRows_; ++row) {
            for (unsigned unit = 0; unit < unitsPerRow_; ++unit) {
                if (!readUnit(unit)) return false;
            }
            passOn(row);
        }
        // libjpeg does strange things with means that are far out of range: it shall do them itself.
        if (!bits_.isWithinData() || (isWild_ && !decoder_.progressive_mode)) return false;
        return !decoder_.progressive_mode || input_.reachesEnd();
    }

    const GreyImage& image() const { return reducer_.result(); }

private:
    // A scan of one component goes block by block. A scan of several goes by units, which hold as many blocks
    // of each component as its sampling factors say.
    bool prepare() {
        columns_ = isSingle_ ? 1 : size_t(luma_.h_samp_factor);
        rows_ = isSingle_ ? 1 : size_t(luma_.v_samp_factor);
        const auto unitsOf = [](unsigned length, int factor) {
            const unsigned unit = 8 * unsigned(factor);
            return (length + unit - 1) / unit;
        };
        unitsPerRow_ =
            isSingle_ ? luma_.width_in_blocks : unitsOf(decoder_.image_width, decoder_.max_h_samp_factor);
        unitRows_ =
            isSingle_ ? luma_.height_in_blocks : unitsOf(decoder_.image_height, decoder_.max_v_samp_factor);
        width_ = unitsPerRow_ * columns_;
        brightness_.resize(width_ * rows_);
        const JQUANT_TBL* steps = named(decoder_.quant_tbl_ptrs, luma_.quant_tbl_no);
        if (steps == nullptr) return false;
        step_ = int64_t{steps->quantval[0]} << decoder_.Al;
        for (int i = 0; i < decoder_.comps_in_scan; ++i) {
            if (!addBlocks(size_t(i))) return false;
        }
        return blocks_.size() <= D_MAX_BLOCKS_IN_MCU;
    }

    bool addBlocks(size_t component) {
        const jpeg_component_info& info = *decoder_.cur_comp_info[component];
        Block block{.differences = differences_.find(decoder_.dc_huff_tbl_ptrs, info.dc_tbl_no),
                    .details = nullptr,
                    .component = component,
                    .place = 0};
        const bool isScaled = named(decoder_.quant_tbl_ptrs, info.quant_tbl_no) != nullptr;
        if (block.differences == nullptr || !isScaled) return false;
        if (!decoder_.progressive_mode) {
            block.details = details_.find(decoder_.ac_huff_tbl_ptrs, info.ac_tbl_no);
            if (block.details == nullptr) return false;
        }
        const auto columns = size_t(isSingle_ ? 1 : info.h_samp_factor);
        const auto rows = size_t(isSingle_ ? 1 : info.v_samp_factor);
        for (size_t i = 0; i < columns * rows; ++i) {
            block.place = i / columns * width_ + i % columns;
            blocks_.push_back(block);
        }
        return true;
    }

    bool readUnit(size_t unit) {
        if (decoder_.restart_interval != 0 && unitsRead_ > 0 && unitsRead_ % decoder_.restart_interval == 0) {
            if (!restart()) return false;
        }
        ++unitsRead_;
        if (!bits_.hold()) return false;
        JpegBits::Cursor cursor = bits_.cursor;
        for (const Block& block : blocks_) {
            const auto change = block.differences->read(cursor);
            if (!change) return false;
            int32_t& last = last_[block.component];
            last = int32_t(uint32_t(last) + uint32_t(*change));
            if (block.component == 0) keep(block.place + unit * columns_, last);
            if (block.details != nullptr && !block.details->skip(cursor)) return false;
        }
        bits_.cursor = cursor;
        return true;
    }

    bool restart() {
        const int marker = bits_.restart();
        const bool isInOrder = marker == int((unitsRead_ / decoder_.restart_interval + 7) % 8);
        last_.fill(0);
        return marker >= 0 && (isInOrder || decoder_.progressive_mode);
    }

    // A block's first coefficient is eight times its mean, in steps, relative to the middle of the range.
    void keep(size_t place, int32_t coefficient) {
        const int64_t mean = ((coefficient * step_ + 4) >> 3) + 128;
        isWild_ |= mean < -256 || mean > 511;
        brightness_[place] = uint8_t(std::clamp<int64_t>(mean, 0, 255));
    }

    // Blocks that only fill up the last unit are not part of the picture.
    void passOn(size_t unitRow) {
        for (size_t row = 0; row < rows_; ++row) {
            if (unitRow * rows_ + row < luma_.height_in_blocks)
                reducer_.addRow(brightness_.data() + row * width_);
        }
    }

    const jpeg_decompress_struct& decoder_;
    JpegInput& input_;
    JpegBits bits_;
    const jpeg_component_info& luma_;
    bool isSingle_;
    AreaReducer reducer_;
    CodeTables<DifferenceCodes> differences_;
    CodeTables<DetailCodes> details_;
    std::vector<Block> blocks_;                     // of a unit
    std::array<int32_t, MAX_COMPS_IN_SCAN> last_{}; // the last mean, to which each block adds its difference
    std::vector<uint8_t> brightness_;               // one row of units
    unsigned unitsPerRow_ = 0;
    unsigned unitRows_ = 0;
    size_t unitsRead_ = 0;
    size_t columns_ = 1; // blocks of brightness in a unit
    size_t rows_ = 1;
    size_t width_ = 0;
    int64_t step_ = 1;
    bool isWild_ = false;
};

// The first scan has the means of all blocks and nothing else.
bool startsWithMeans(const jpeg_decompress_struct& decoder) {
    return decoder.progressive_mode && decoder.Se == 0 && decoder.Ah == 0 && decoder.Al >= 0 &&
           decoder.Al <= 13;
}

// The one scan has all components, and no other has more blocks than the one that shows brightness. All
// cameras write such files.
bool isPlain(const jpeg_decompress_struct& decoder) {
    const jpeg_component_info& luma = *decoder.comp_info;
    return !decoder.progressive_mode && decoder.Se == 63 && decoder.Ah == 0 && decoder.Al == 0 &&
           decoder.data_precision == 8 && decoder.comps_in_scan == decoder.num_components &&
           luma.h_samp_factor == decoder.max_h_samp_factor && luma.v_samp_factor == decoder.max_v_samp_factor;
}

} // namespace

bool canReadMeans(const jpeg_decompress_struct& decoder) {
    const bool hasLuma = decoder.jpeg_color_space == JCS_GRAYSCALE || decoder.jpeg_color_space == JCS_YCbCr;
    return hasLuma && !decoder.arith_code && decoder.Ss == 0 && decoder.comps_in_scan > 0 &&
           decoder.cur_comp_info[0] == decoder.comp_info && (startsWithMeans(decoder) || isPlain(decoder));
}

std::optional<GreyImage> readMeans(const jpeg_decompress_struct& decoder, JpegInput& input, int side) {
    MeansScan scan(decoder, input, side);
    if (!scan.read()) return std::nullopt;
    return scan.image();
}

} // namespace loftmere

#include "CleanerCore/Scanning/Photos/JpegDecoding.h"

#include <algorithm>
#include <array>

namespace loftmere {

namespace {

// The bits of a scan's compressed data, up to the next marker.
class JpegBits {
public:
    explicit JpegBits(JpegInput& input) : input_(input) {}

    // The next 16 bits without taking them; zeros beyond the end of the data.
    uint32_t peek16();

    // Takes bits that were peeked at, at most 16. False when there are not that many.
    bool take(int count);

    // Skips the marker between two stretches of data. False when another one is there.
    bool restart();

private:
    void fill();

    JpegInput& input_;
    uint64_t bits_ = 0; // the lowest `count_` of them
    int count_ = 0;
    int marker_ = 0;
    bool atEnd_ = false;
};

// The codes of the differences between the mean values of neighbouring blocks.
class JpegHuffmanTable {
public:
    explicit JpegHuffmanTable(const JHUFF_TBL& codes);

    // Whether the code lengths form a code.
    bool isValid() const { return isValid_; }

    // The next difference; absent when the data is damaged or at its end.
    std::optional<int32_t> readDifference(JpegBits& bits) const;

private:
    struct Code {
        uint8_t length = 0; // 0: not a code, or too long for the quick table
        uint8_t symbol = 0;
    };
    static constexpr int quickBits = 9;

    Code find(uint32_t next16) const;

    bool isValid_ = false;
    std::array<Code, 1U << quickBits> quick_{};
    std::array<uint32_t, 17> first_{};  // the first code of each length
    std::array<uint32_t, 17> behind_{}; // one past the last
    std::array<uint32_t, 17> offset_{}; // of its symbol
    std::array<uint8_t, 256> symbols_{};
};

void JpegBits::fill() {
    while (count_ <= 48 && !atEnd_) {
        int byte = input_.next();
        if (byte == 0xFF) {
            int code = 0xFF;
            while (code == 0xFF) code = input_.next();
            if (code != 0) marker_ = code;
            atEnd_ = code != 0; // a zero only means that the byte before it is data
        }
        if (byte < 0) atEnd_ = true;
        if (atEnd_) return;
        bits_ = bits_ << 8 | uint64_t(byte);
        count_ += 8;
    }
}

uint32_t JpegBits::peek16() {
    if (count_ < 16) fill();
    const uint64_t next = count_ >= 16 ? bits_ >> (count_ - 16) : bits_ << (16 - count_);
    return uint32_t(next & 0xFFFF);
}

bool JpegBits::take(int count) {
    if (count > count_) return false;
    count_ -= count;
    return true;
}

bool JpegBits::restart() {
    fill();
    const bool isThere = count_ < 8 && marker_ >= JPEG_RST0 && marker_ < JPEG_RST0 + 8;
    count_ = 0;
    marker_ = 0;
    atEnd_ = !isThere;
    return isThere;
}

JpegHuffmanTable::JpegHuffmanTable(const JHUFF_TBL& codes) {
    std::ranges::copy(codes.huffval, symbols_.begin());
    uint32_t code = 0;
    uint32_t count = 0;
    for (size_t length = 1; length <= 16; ++length) {
        first_[length] = code;
        offset_[length] = count;
        code += codes.bits[length];
        count += codes.bits[length];
        behind_[length] = code;
        if (code > (1U << length) || count > symbols_.size()) return;
        code <<= 1;
    }
    for (uint32_t start = 0; start < quick_.size(); ++start) {
        const Code found = find(start << (16 - quickBits));
        if (found.length <= quickBits) quick_[start] = found;
    }
    isValid_ = true;
}

JpegHuffmanTable::Code JpegHuffmanTable::find(uint32_t next16) const {
    for (size_t length = 1; length <= 16; ++length) {
        const uint32_t code = next16 >> (16 - length);
        if (code >= first_[length] && code < behind_[length]) {
            return {uint8_t(length), symbols_[offset_[length] + code - first_[length]]};
        }
    }
    return {};
}

std::optional<int32_t> JpegHuffmanTable::readDifference(JpegBits& bits) const {
    const uint32_t next = bits.peek16();
    Code code = quick_[next >> (16 - quickBits)];
    if (code.length == 0) code = find(next);
    if (code.length == 0 || code.symbol > 15 || !bits.take(code.length)) return std::nullopt;
    if (code.symbol == 0) return 0;
    const auto value = int32_t(bits.peek16() >> (16 - code.symbol));
    if (!bits.take(code.symbol)) return std::nullopt;
    const int32_t half = 1 << (code.symbol - 1);
    return value >= half ? value : value - 2 * half + 1;
}

// One component of the scan: how many of its blocks are in a unit, and the last value, to which each block
// adds its difference.
struct Component {
    const jpeg_component_info* info;
    JpegHuffmanTable table;
    int columns;
    int rows;
    int32_t last = 0;
};

// The table with a number that is in the file. libjpeg checks such numbers only when it decodes itself.
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
    // A scan of one component goes block by block. A scan of several goes by units, which hold as many blocks
    // of each component as its sampling factors say.
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

    // A block's first coefficient is eight times its mean, in steps, relative to the middle of the range.
    void keep(size_t unit, size_t block, int32_t coefficient) {
        const int64_t mean = ((coefficient * step_ + 4) >> 3) + 128;
        const size_t column = unit * columns_ + block % columns_;
        brightness_[block / columns_ * width_ + column] = uint8_t(std::clamp<int64_t>(mean, 0, 255));
    }

    // Blocks that only fill up the last unit are not part of the picture.
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

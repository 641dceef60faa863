#include "CleanerCore/Scanning/Photos/Orientation.h"

#include <array>
#include <utility>

namespace loftmere {

namespace {

// Where a pixel of the upright picture comes from: the axes exchanged first, then each read backwards or not.
struct Turn {
    bool exchanged;
    bool columnsBackwards;
    bool rowsBackwards;
};

constexpr std::array<Turn, 8> turns{{
    {false, false, false}, // 1
    {false, true, false},  // 2: mirrored
    {false, true, true},   // 3: upside down
    {false, false, true},  // 4: mirrored and upside down
    {true, false, false},  // 5: mirrored along the diagonal
    {true, false, true},   // 6: to be turned right
    {true, true, true},    // 7: mirrored along the other diagonal
    {true, true, false},   // 8: to be turned left
}};

constexpr size_t headerSize = 8;
constexpr size_t entrySize = 12;
constexpr uint32_t orientationTag = 0x0112;
constexpr uint32_t shortType = 3;

// Numbers of a block that is in either byte order; beyond its end they are 0.
class ExifReader {
public:
    explicit ExifReader(std::span<const uint8_t> bytes)
        : bytes_(bytes), bigEndian_(!bytes.empty() && bytes[0] == 'M') {}

    uint32_t number(size_t offset, size_t size) const {
        if (offset > bytes_.size() || bytes_.size() - offset < size) return 0;
        uint32_t value = 0;
        for (size_t i = 0; i < size; ++i)
            value = value << 8 | bytes_[offset + (bigEndian_ ? i : size - 1 - i)];
        return value;
    }

private:
    std::span<const uint8_t> bytes_;
    bool bigEndian_;
};

} // namespace

int exifOrientation(std::span<const uint8_t> exif) {
    const ExifReader reader(exif);
    if (exif.size() < headerSize || reader.number(2, 2) != 42) return uprightOrientation;
    const size_t directory = reader.number(4, 4);
    const size_t count = reader.number(directory, 2);
    for (size_t i = 0; i < count; ++i) {
        const size_t entry = directory + 2 + i * entrySize;
        if (reader.number(entry, 2) != orientationTag || reader.number(entry + 2, 2) != shortType) continue;
        const uint32_t value = reader.number(entry + 8, 2);
        return value >= 1 && value <= turns.size() ? int(value) : uprightOrientation;
    }
    return uprightOrientation;
}

GreyImage turnedUpright(const GreyImage& image, int orientation) {
    if (orientation <= uprightOrientation || orientation > int(turns.size())) return image;
    const Turn turn = turns[size_t(orientation - 1)];
    GreyImage upright =
        turn.exchanged ? GreyImage(image.height, image.width) : GreyImage(image.width, image.height);
    for (int y = 0; y < upright.height; ++y) {
        for (int x = 0; x < upright.width; ++x) {
            int column = turn.exchanged ? y : x;
            int row = turn.exchanged ? x : y;
            if (turn.columnsBackwards) column = image.width - 1 - column;
            if (turn.rowsBackwards) row = image.height - 1 - row;
            upright.at(x, y) = image.at(column, row);
        }
    }
    return upright;
}

} // namespace loftmere

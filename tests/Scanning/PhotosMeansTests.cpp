#include "CleanerCore/Scanning/Photos/Thumbnail.h"
#include "tests/Support/Photos.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <vector>

// Our own reading of JPEG data beside libjpeg's.

using namespace loftmere;

namespace {

// A code for some symbols, of random lengths up to 16 bits.
struct Code {
    explicit Code(std::mt19937& random, std::vector<uint8_t> of) : symbols(std::move(of)) {
        std::ranges::shuffle(symbols, random);
        size_t left = symbols.size();
        size_t free = 1; // codes of the length; one must be left in the end, that of ones alone
        uint32_t next = 0;
        for (unsigned length = 1; length <= 16; ++length, next <<= 1) {
            free *= 2;
            const size_t longer = size_t{1} << (16 - length); // codes of 16 bits in one of this length
            const size_t most =
                longer == 1 ? left : std::min(left, (free * longer - 1 - left) / (longer - 1));
            const size_t here = longer == 1 ? left : std::min(most, random() % (free / 2 + 1));
            counts[length - 1] = char(here);
            for (size_t i = 0; i < here; ++i) {
                codes[symbols[symbols.size() - left--]] = {next++, length};
                --free;
            }
        }
    }

    std::vector<uint8_t> symbols;
    std::array<char, 16> counts{};
    std::array<std::pair<uint32_t, unsigned>, 256> codes{};
};

std::vector<uint8_t> detailSymbols() {
    std::vector<uint8_t> symbols{0x00, 0xF0};
    for (unsigned symbol = 0; symbol < 256; ++symbol) {
        if ((symbol & 15) >= 1 && (symbol & 15) <= 10) symbols.push_back(uint8_t(symbol));
    }
    return symbols;
}

// Writes baseline files of random blocks in every form that the standard allows.
class RandomJpeg {
public:
    explicit RandomJpeg(uint32_t seed) : random_(seed) {}

    std::string make() {
        constexpr std::array<std::pair<unsigned, unsigned>, 6> samplings{
            {{1, 1}, {2, 1}, {2, 2}, {1, 2}, {4, 1}, {2, 4}}};
        const auto [across, down] = samplings[random_() % samplings.size()];
        const unsigned colors = random_() % 4 == 0 ? 1 : 3;
        width_ = 512 + random_() % 300;
        height_ = 1 + random_() % 300;
        restartInterval_ = random_() % 3 == 0 ? 1 + random_() % 50 : 0;
        writeHeader(colors, across * 16 + down);
        const bool isInterleaved = colors == 3;
        const unsigned unitsAcross = unitsOf(width_, isInterleaved ? across : 1);
        const unsigned units = unitsAcross * unitsOf(height_, isInterleaved ? down : 1);
        for (unsigned unit = 0; unit < units; ++unit) {
            if (restartInterval_ > 0 && unit > 0 && unit % restartInterval_ == 0) restart(unit);
            for (unsigned i = 0; i < (isInterleaved ? across * down : 1); ++i) writeBlock(0);
            for (unsigned color = 1; color < colors; ++color) writeBlock(color);
        }
        finishByte();
        return bytes_ + "\xFF\xD9";
    }

private:
    static unsigned unitsOf(unsigned length, unsigned factor) {
        return (length + 8 * factor - 1) / (8 * factor);
    }

    void segment(int marker, const std::string& content) {
        const size_t length = content.size() + 2;
        bytes_ += {'\xFF', char(marker), char(length >> 8), char(length)};
        bytes_ += content;
    }

    void writeHeader(unsigned colors, unsigned sampling) {
        bytes_ = "\xFF\xD8";
        segment(0xDB, std::string(1, '\0') + std::string(64, char(step_)));
        std::string frame{8,           char(height_ >> 8), char(height_), char(width_ >> 8), char(width_),
                          char(colors)};
        std::string scan{char(colors)};
        for (unsigned color = 0; color < colors; ++color) {
            frame += {char(color + 1), char(color == 0 ? sampling : 0x11), 0};
            scan += {char(color + 1), char(color == 0 ? 0 : 0x11)};
        }
        segment(0xC0, frame);
        for (int i = 0; i < 4; ++i) {
            const Code& code = i < 2 ? differences_[i] : details_[i - 2];
            segment(0xC4, std::string{char(i < 2 ? i : 0x10 + i - 2)} +
                              std::string(code.counts.begin(), code.counts.end()) +
                              std::string(code.symbols.begin(), code.symbols.end()));
        }
        if (restartInterval_ > 0) segment(0xDD, {char(restartInterval_ >> 8), char(restartInterval_)});
        segment(0xDA, scan + std::string("\0\x3F\0", 3));
    }

    void put(uint32_t value, unsigned count) {
        while (count-- > 0) {
            held_ = uint8_t(held_ << 1 | (value >> count & 1));
            if (++heldBits_ < 8) continue;
            bytes_ += char(held_);
            if (held_ == 0xFF) bytes_ += '\0';
            heldBits_ = 0;
        }
    }

    void put(const Code& code, unsigned symbol) { put(code.codes[symbol].first, code.codes[symbol].second); }

    void finishByte() {
        while (heldBits_ > 0) put(1, 1);
    }

    void restart(unsigned unit) {
        finishByte();
        bytes_ += {'\xFF', char(0xD0 + (unit / restartInterval_ - 1) % 8)};
        last_ = {};
    }

    void writeBlock(unsigned color) {
        const int value = int(random_() % 2000) / step_ - 1000 / step_;
        const int change = value - last_[color];
        last_[color] = value;
        const auto size = unsigned(std::bit_width(unsigned(std::abs(change))));
        put(differences_[color > 0], size);
        put(uint32_t(change < 0 ? change - 1 : change), size);
        const Code& code = details_[color > 0];
        const unsigned density = random_() % 30;
        for (unsigned position = 1; position < 64;) {
            if (random_() % 30 >= density) return put(code, 0);
            if (random_() % 60 == 0 && position <= 47) {
                put(code, 0xF0);
                position += 16;
                continue;
            }
            const unsigned zeros = std::min(unsigned(random_() % (1 + random_() % 16)), 63 - position);
            const unsigned bits = 1 + random_() % (1 + random_() % 10);
            put(code, zeros << 4 | bits);
            put(uint32_t(random_()), bits);
            position += zeros + 1;
        }
    }

    std::mt19937 random_;
    std::array<Code, 2> differences_{Code(random_, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}),
                                     Code(random_, {11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0})};
    std::array<Code, 2> details_{Code(random_, detailSymbols()), Code(random_, detailSymbols())};
    int step_ = 1 + int(random_() % 20);
    unsigned width_ = 0;
    unsigned height_ = 0;
    unsigned restartInterval_ = 0;
    std::array<int, 3> last_{};
    std::string bytes_;
    uint8_t held_ = 0;
    unsigned heldBits_ = 0;
};

struct Reading {
    ThumbnailResult thumbnail;
    int questions = 0; // whether it was cancelled: one for each row that libjpeg reads
};

Reading reading(const std::string& path, JpegMeans means) {
    Reading reading{std::unexpected(NoThumbnail::noPicture)};
    const auto asked = [&] { return ++reading.questions < 0; };
    reading.thumbnail = jpegThumbnail(*RegularFile::open(path), asked, means);
    return reading;
}

// By both ways of reading.
void expectSame(const std::string& path, const std::string& what) {
    const auto own = reading(path, JpegMeans::read).thumbnail;
    const auto library = reading(path, JpegMeans::leave).thumbnail;
    ASSERT_EQ(own.has_value(), library.has_value()) << what;
    if (!own) {
        EXPECT_EQ(own.error(), library.error()) << what;
        return;
    }
    EXPECT_EQ(own->image, library->image) << what;
    EXPECT_EQ(own->pixelCount, library->pixelCount) << what;
}

} // namespace

TEST(PhotosMeans, AreThoseOfTheLibrary) {
    const test::TemporaryHome home;
    for (uint32_t seed = 0; seed < 40; ++seed) {
        const std::string path = home.file("a.jpg", RandomJpeg(seed).make());
        const Reading own = reading(path, JpegMeans::read);
        ASSERT_TRUE(own.thumbnail) << seed;
        expectSame(path, std::to_string(seed));
        EXPECT_LT(own.questions, 8 + std::filesystem::file_size(path) / 32768)
            << seed << " was left to libjpeg";
    }
    for (const char* name : {"photo.jpg", "grey.jpg", "cmyk.jpg", "half.jpg", "turned5.jpg"})
        expectSame(test::photo(name), name);
}

TEST(PhotosMeans, SpoiltFilesAreLeftToTheLibrary) {
    const test::TemporaryHome home;
    for (uint32_t seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        std::string content = RandomJpeg(seed % 20).make();
        const size_t reach = seed % 3 == 0 ? 700 : content.size();
        for (uint32_t i = 0; i < 1 + seed % 4; ++i) content[random() % reach] = char(random());
        if (seed % 5 == 0) content.resize(random() % content.size());
        if (seed % 7 == 0) content.erase(random() % content.size(), random() % 9);
        expectSame(home.file("a.jpg", content), std::to_string(seed));
    }
}

#include "CleanerCore/Scanning/Photos/Likeness.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"
#include "tests/Support/Photos.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <bit>
#include <filesystem>
#include <random>

using namespace loftmere;
using test::photo;
using test::photoContent;

namespace {

// The pictures of one scene, with the number of their pixels.
struct Kinds {
    int64_t pixelCount;
    std::vector<std::string> names;
};

const Kinds kinds[] = {
    {307200,
     {"photo.jpg", "progressive.jpg", "progressive444.jpg", "grey.jpg", "progressive-grey.jpg", "cmyk.jpg",
      "cmyk-progressive.jpg", "photo.heic", "photo.webp"}},
    {76800, {"half.jpg"}},
    {6912,
     {"alpha.webp", "color.png", "interlaced.png", "palette.png", "deep.png", "grey.png", "photo.tiff",
      "cmyk.tif", "deep-tiled.tif", "photo.gif"}},
};

int distance(const Likeness& a, const Likeness& b) {
    return std::popcount(a.hash ^ b.hash);
}

// Of the process so far, so it is of use only in a process that does nothing else.
int64_t peakMemory() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return int64_t{usage.ru_maxrss} * 1024;
}

void refuseVastPictures() {
    const test::TemporaryHome home;
    constexpr uint64_t gibi = uint64_t{1} << 30;
    const struct {
        std::string content;
        uint64_t emptyBytes = 0; // that follow and take no room on disk
    } bombs[] = {
        {photoContent("vast.png")},
        {photoContent("vast-interlaced.png")},
        {photoContent("vast.jpg")},
        {photoContent("vast-arithmetic.jpg")}, // bits without end
        {photoContent("vast-progressive.jpg")},
        {photoContent("vast-cmyk.jpg")},
        {std::string("\xFF\xD8\xFF\xE0\0\4\0\0", 8), gibi / 2 - 8},
        {"RIFF\xFF\xFF\xFF\x7FWEBPVP8 ", 3 * gibi},
        {"GIF89a", 2 * gibi},
        {photoContent("vast-profile.tif"), 2 * gibi},
    };
    ASSERT_TRUE(dHash(photo("small-profile.tif"))); // with whatever libvips takes once
    const int64_t before = peakMemory();
    const Date start = currentDate();
    for (const auto& [content, emptyBytes] : bombs) {
        const std::string bomb = home.file("bomb", content);
        std::filesystem::resize_file(bomb, content.size() + emptyBytes);
        EXPECT_FALSE(dHash(bomb)) << content.substr(0, 12);
    }
    EXPECT_LT(secondsBetween(start, currentDate()), 4);
    EXPECT_LT(peakMemory() - before, 64 << 20);

    const std::string profiled = home.file("profiled", photoContent("large-profile.tif"));
    std::filesystem::resize_file(profiled, 750'000'000);
    EXPECT_TRUE(dHash(profiled)); // a picture nonetheless
    EXPECT_LT(peakMemory() - before, 320 << 20);
}

} // namespace

TEST(PhotosDecoding, EveryKindShowsTheSameScene) {
    const auto scene = dHash(photo("photo.jpg"));
    ASSERT_TRUE(scene);
    for (const auto& [pixelCount, names] : kinds) {
        for (const std::string& name : names) {
            const auto likeness = dHash(photo(name));
            ASSERT_TRUE(likeness) << name;
            EXPECT_LE(distance(*likeness, *scene), 6) << name;
            EXPECT_EQ(likeness->pixelCount, pixelCount) << name;
        }
    }
    EXPECT_GT(distance(*dHash(photo("other.jpg")), *scene), 20);
    EXPECT_EQ(dHash(photo("progressive.jpg")), dHash(photo("photo.jpg")));
}

TEST(PhotosDecoding, EightOrientationsGiveOneHash) {
    const auto upright = dHash(photo("turned1.jpg"));
    ASSERT_TRUE(upright);
    for (int i = 2; i <= 8; ++i) EXPECT_EQ(dHash(photo("turned" + std::to_string(i) + ".jpg")), upright) << i;

    // A block that says nothing, or lies about where it says it, leaves the picture as it is.
    const uint8_t wild[] = {'M', 'M', 0, 42, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF};
    EXPECT_EQ(exifOrientation(wild), 1);
    EXPECT_EQ(exifOrientation({}), 1);
}

TEST(PhotosDecoding, GoesByContentAndTakesOnlyPictures) {
    const test::TemporaryHome home;
    EXPECT_EQ(dHash(home.file("a.jpg", photoContent("color.png"))), dHash(photo("color.png")));
    EXPECT_EQ(dHash(home.file("b.png", photoContent("photo.jpg"))), dHash(photo("photo.jpg")));
    for (const char* brand : {"heix", "hevc", "hevx", "hevm", "hevs", "mif1", "mif2", "miaf", "avis"}) {
        const std::string heif = photoContent("photo.heic").replace(8, 4, brand);
        EXPECT_EQ(dHash(home.file("c", heif)), dHash(photo("photo.heic"))) << brand;
    }
    EXPECT_FALSE(dHash(home.file("empty.jpg", "")));
    EXPECT_FALSE(dHash(home.file("text.jpg", "no picture at all, but text")));
    EXPECT_FALSE(dHash(home.file("start.jpg", "\xFF\xD8\xFF")));
    EXPECT_FALSE(dHash(home.folder("folder.jpg")));
    EXPECT_FALSE(dHash(home.at("missing.jpg")));
    ASSERT_EQ(::mkfifo(home.at("pipe.jpg").c_str(), 0600), 0);
    EXPECT_FALSE(dHash(home.at("pipe.jpg")));
    EXPECT_FALSE(dHash(photo("photo.jpg"), [] { return true; }));
    EXPECT_FALSE(dHash(photo("color.png"), [] { return true; }));
}

// What comes of damaged data does not matter, as long as it comes soon and nothing else does.
TEST(PhotosDecoding, SpoiltFilesDoNoHarmAndThoseCutShortAreNoPictures) {
    const test::TemporaryHome home;
    std::mt19937 random(4);
    testing::internal::CaptureStderr();
    for (const Kinds& each : kinds) {
        for (const std::string& name : each.names) {
            const std::string whole = photoContent(name);
            for (const size_t length : {size_t{20}, whole.size() / 4, whole.size() / 2, whole.size() * 3 / 4})
                EXPECT_FALSE(dHash(home.file(name, whole.substr(0, length)))) << name << ' ' << length;
            for (int round = 0; round < 24; ++round) {
                std::string damaged = whole;
                const size_t reach = round % 2 == 0 ? std::min<size_t>(700, whole.size()) : whole.size();
                for (int i = 0; i < 1 + round / 4; ++i) damaged[random() % reach] = char(random());
                (void)dHash(home.file("damaged", damaged));
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// In a process of its own, so that the memory of other tests does not count.
TEST(PhotosDecoding, VastPicturesAreRefused) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            refuseVastPictures();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

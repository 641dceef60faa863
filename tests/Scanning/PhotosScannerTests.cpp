#include "CleanerCore/Platform/FileStatus.h"
#include "tests/Support/Photos.h"
#include "tests/Support/ScannerFixtures.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <set>

using namespace loftmere;
using test::photoContent;

namespace {

using Names = std::set<std::string>;

std::vector<ScanItem>
scan(const test::TemporaryHome& home, std::function<bool()> isCancelled = [] { return false; }) {
    ScanContext context = test::scanContext(home);
    context.isCancelled = std::move(isCancelled);
    return test::scan(CleanCategory::similarPhotos, context);
}

// The names of the files proposed.
Names proposed(const test::TemporaryHome& home) {
    Names names;
    for (const ScanItem& item : scan(home)) names.insert(item.title);
    return names;
}

} // namespace

TEST(PhotosScanner, KeepsTheOneWithMostPixelsThenMostBytes) {
    const test::TemporaryHome home;
    const std::string small = home.file("Pictures/trip/IMG_1.JPG", photoContent("half.jpg"));
    home.file("Desktop/large.jpeg", photoContent("photo.jpg"));
    home.file("Downloads/other.jpg", photoContent("other.jpg"));
    const auto items = scan(home);
    EXPECT_THAT(test::linesOf(items),
                testing::ElementsAre("IMG_1.JPG | review | Looks like large.jpeg (kept: higher quality)"));
    EXPECT_EQ(*items.at(0).path(), small);
    EXPECT_EQ(items[0].size, linkStatus(small)->allocated);

    // As many pixels in more bytes: what stands behind the end of a picture counts for nothing else.
    home.file("Documents/larger.jpg", photoContent("photo.jpg") + std::string(65536, ' '));
    EXPECT_EQ(proposed(home), (Names{"IMG_1.JPG", "large.jpeg"}));

    // The first found among equals.
    home.file("Pictures/first.jpg", photoContent("other.jpg"));
    EXPECT_EQ(proposed(home), (Names{"IMG_1.JPG", "large.jpeg", "other.jpg"}));
}

TEST(PhotosScanner, LooksOnlyWhereAUserSeesPictures) {
    const test::TemporaryHome home;
    home.file("Pictures/a.jpg", photoContent("photo.jpg"));
    for (const char* place : {
             "Pictures/.hidden/b.jpg",
             "Pictures/.c.jpg",
             "Pictures/Photos Library.photoslibrary/originals/d.jpg",
             "Documents/Old.APP/e.jpg",
             "Documents/song.Band/e.jpg",
             "Documents/site.git/e.jpg",
             "Music/f.jpg",
             "Pictures/g.txt",
             "Pictures/h\xFF.jpg",
             "Pictures/empty.jpg/i.txt",
         }) {
        home.file(place, photoContent("half.jpg"));
    }
    home.link("Pictures/j.jpg", home.at("Music/f.jpg"));
    EXPECT_EQ(proposed(home), Names{});
    const Names images{"k.JPG", "k.heic", "k.heif", "k.jpeg", "k.png", "k.tif", "k.tiff", "k.webp"};
    for (const std::string& name : images)
        home.file("Pictures/plain.folder/" + name, photoContent("half.jpg"));
    EXPECT_EQ(proposed(home), images);
}

// One file is no copy of itself, however many ways lead to it; two names of one file are two names.
TEST(PhotosScanner, NeverProposesAFileBecauseOfItself) {
    const test::TemporaryHome home;
    const std::string only = home.file("Documents/a.jpg", photoContent("photo.jpg"));
    home.link("Desktop", home.at("Documents"));
    home.link("Pictures", home.at("Documents"));
    EXPECT_EQ(proposed(home), Names{});
    std::filesystem::create_hard_link(only, home.at("Documents/b.jpg"));
    EXPECT_EQ(scan(home).size(), 1U);
}

TEST(PhotosScanner, CancelledGivesNothing) {
    const test::TemporaryHome home;
    for (int i = 0; i < 8; ++i) home.file("Pictures/" + std::to_string(i) + ".jpg", photoContent("half.jpg"));
    std::atomic<int> asked = 0;
    EXPECT_EQ(scan(home, [&] { return ++asked < 0; }).size(), 7U);
    const int times = asked;
    for (const int limit : {0, 3, 9, times / 2, times - 1}) {
        asked = 0;
        EXPECT_TRUE(scan(home, [&] { return ++asked > limit; }).empty())
            << "cancelled after " << limit << " of " << times;
    }
}

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Scanning/Scanners/SimilarPhotosScanner.h"
#include "tests/Scanning/Photos.h"
#include "tests/Support/ScannerFixtures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>

using namespace loftmere;
using test::photoContent;

namespace {

struct Scan {
    std::function<bool()> isCancelled = [] { return false; };
    std::mutex lock;
    std::set<std::string> reported;

    std::vector<ScanItem> run(const test::TemporaryHome& home) {
        ScanContext context = test::scanContext(home);
        context.isCancelled = isCancelled;
        context.report = [&](CleanCategory category, const std::string& text) {
            EXPECT_EQ(category, CleanCategory::similarPhotos);
            const std::lock_guard guard(lock);
            reported.insert(text);
        };
        return SimilarPhotosScanner().scan(context).value();
    }
};

// The names of the files proposed.
std::set<std::string> proposed(const test::TemporaryHome& home) {
    std::set<std::string> titles;
    for (const ScanItem& item : Scan().run(home)) titles.insert(item.title);
    return titles;
}

using Names = std::set<std::string>;

} // namespace

TEST(PhotosScanner, KeepsTheOneWithMostPixelsThenMostBytes) {
    const test::TemporaryHome home;
    const std::string small = home.file("Pictures/trip/IMG_1.JPG", photoContent("half.jpg"));
    home.file("Desktop/large.jpeg", photoContent("photo.jpg"));
    home.file("Downloads/other.jpg", photoContent("other.jpg"));
    Scan scan;
    const auto items = scan.run(home);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0], ScanItem::make({.title = "IMG_1.JPG",
                                        .target = PathTarget{small},
                                        .size = linkStatus(small)->allocated,
                                        .category = CleanCategory::similarPhotos,
                                        .risk = Risk::review,
                                        .reason = "Looks like large.jpeg (kept: higher quality)",
                                        .lastUsed = FS::lastUsedDate(small)}));
    EXPECT_TRUE(scan.reported.contains(small));
    EXPECT_TRUE(scan.reported.contains(home.at("Pictures/trip")));

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
             "Music/f.jpg",
             "Pictures/g.txt",
             "Pictures/h\xFF.jpg",
             "Pictures/empty.jpg/i.txt",
         }) {
        home.file(place, photoContent("half.jpg"));
    }
    home.link("Pictures/j.jpg", home.at("Music/f.jpg"));
    EXPECT_EQ(proposed(home), Names{});
    home.file("Pictures/plain.folder/k.JPG", photoContent("half.jpg"));
    EXPECT_EQ(proposed(home), Names{"k.JPG"});
}

// One file is no copy of itself, however many ways lead to it; two names of one file are two names.
TEST(PhotosScanner, NeverProposesAFileBecauseOfItself) {
    const test::TemporaryHome home;
    const std::string only = home.file("Documents/a.jpg", photoContent("photo.jpg"));
    home.link("Desktop", home.at("Documents"));
    home.link("Pictures", home.at("Documents"));
    EXPECT_EQ(proposed(home), Names{});
    std::filesystem::create_hard_link(only, home.at("Documents/b.jpg"));
    EXPECT_EQ(proposed(home).size(), 1U);
}

TEST(PhotosScanner, CancelledGivesNothing) {
    const test::TemporaryHome home;
    for (int i = 0; i < 8; ++i) home.file("Pictures/" + std::to_string(i) + ".jpg", photoContent("half.jpg"));
    std::atomic<int> asked = 0;
    Scan whole;
    whole.isCancelled = [&] { return ++asked < 0; };
    EXPECT_EQ(whole.run(home).size(), 7U);
    const int times = asked;
    for (const int limit : {0, 3, 9, times / 2, times - 1}) {
        asked = 0;
        Scan scan;
        scan.isCancelled = [&] { return ++asked > limit; };
        EXPECT_TRUE(scan.run(home).empty()) << "cancelled after " << limit << " of " << times;
    }
}

#include "CleanerCore/Scanning/Duplicates/Hasher64.h"
#include "CleanerCore/Support/Crypto.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace loftmere;

TEST(Hasher64, DigestsRegularFilesOrTheirBeginning) {
    const test::TemporaryHome home;
    EXPECT_EQ(Hasher64::hash(home.file("abc", "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    std::string content(3 * 1024 * 1024 + 17, 'x');
    for (size_t i = 0; i < content.size(); i += 1000) content[i] = static_cast<char>(i / 1000);
    const std::string path = home.file("large", content);
    for (const int64_t limit : {int64_t{0}, int64_t{-5}, int64_t{65536}, int64_t{131073}, int64_t{1} << 62}) {
        Sha256 expected;
        const size_t length = limit < 0 ? 0 : std::min(content.size(), static_cast<size_t>(limit));
        expected.update(std::as_bytes(std::span(content)).first(length));
        EXPECT_EQ(Hasher64::hash(path, limit), expected.finish()) << limit;
    }
    EXPECT_EQ(Hasher64::hash(path), Hasher64::hash(home.link("link", path), int64_t(content.size())));

    ASSERT_EQ(::mkfifo(home.at("fifo").c_str(), 0600), 0);
    for (const std::string& refused :
         {home.at("missing"), home.at("fifo"), home.path(), std::string("/dev/null")})
        EXPECT_EQ(Hasher64::hash(refused), std::nullopt) << refused;
}

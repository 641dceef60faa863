#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Support/PropertyList.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <filesystem>

using namespace loftmere;
using namespace std::string_literals;

namespace {

// Both were written by Python's plistlib from one dictionary.
std::string fixture(const std::string& form) {
    return readFile(LOFTMERE_SOURCE_DIR "/tests/Fixtures/backup-info." + form + ".plist").value();
}

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

std::string number(uint64_t value) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

// A binary property list of these objects, of which the first is the top; offsets take 4 bytes, references 1.
std::string binary(const std::vector<std::string>& objects) {
    std::string text = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += number(text.size()).substr(4);
        text += object;
    }
    const uint64_t table = text.size();
    return text + offsets + std::string(6, '\0') + "\x04\x01" + number(objects.size()) + number(0) +
           number(table);
}

std::string ascii(const std::string& text) {
    return static_cast<char>(0x50 | text.size()) + text;
}

// An array of `count` references to object `index`.
std::string arrayOf(int count, int index) {
    return static_cast<char>(0xA0 | count) +
           std::string(static_cast<size_t>(count), static_cast<char>(index));
}

} // namespace

TEST(PropertyList, ReadsBothFormsAlike) {
    const std::string xml = fixture("xml");
    std::string wide = "\xFF\xFE";
    for (const char16_t unit : std::filesystem::path(xml).u16string()) {
        wide += {static_cast<char>(unit), static_cast<char>(unit >> 8)};
    }
    for (const std::string& form : {xml, "\xEF\xBB\xBF" + xml, wide, fixture("binary")}) {
        const auto list = PropertyList::parse(form);
        ASSERT_TRUE(list) << form;
        EXPECT_EQ(*list->at<std::string>("Device Name"), "Zoë’s 📱");
        EXPECT_EQ(list->at<std::string>("Long")->size(), 300U);
        EXPECT_EQ(toISO8601(*list->at<Date>("Last Backup Date")), "2026-03-01T12:30:15Z");
        EXPECT_EQ(list->at<std::string>("Last Backup Date"), nullptr);
        EXPECT_EQ(list->at<std::string>("None"), nullptr);
        const auto* values = list->at<PropertyList::Dictionary>("Applications")
                                 ->find("com.example.a")
                                 ->second.as<PropertyList::Array>();
        ASSERT_EQ(values->size(), 5U);
        EXPECT_EQ(*values->at(1).as<int64_t>(), -2);
        EXPECT_EQ(*values->at(2).as<double>(), 2.5);
        EXPECT_EQ(*values->at(3).as<bool>(), true);
        EXPECT_EQ(values->at(4).as<PropertyList::Data>()->size(), 2U);
    }
}

TEST(PropertyList, DatesAreRightOrAbsent) {
    const std::pair<double, const char*> cases[] = {
        {2208988800, "2071-01-01T00:00:00Z"}, {-3187296000, "1900-01-01T00:00:00Z"}, {1e300, ""}, {NAN, ""}};
    for (const auto& [seconds, text] : cases) {
        const auto list = PropertyList::parse(binary({"\x33" + number(std::bit_cast<uint64_t>(seconds))}));
        const Date* date = list.value().as<Date>();
        EXPECT_EQ(date == nullptr ? "" : toISO8601(*date), text) << seconds;
    }
    EXPECT_EQ(PropertyList::parse("<plist><date>rubbish</date></plist>").value().as<Date>(), nullptr);
}

TEST(PropertyList, DamagedInputIsAbsentOrAtLeastHarmless) {
    for (const char* form : {"xml", "binary"}) {
        const std::string whole = fixture(form);
        for (size_t length = 0; length < whole.size() - 40; ++length) {
            EXPECT_FALSE(PropertyList::parse(whole.substr(0, length))) << form << length;
        }
        for (size_t at = 0; at < whole.size(); ++at) {
            for (const char change : {'\xFF', '\x00', '<', '\x7F'}) {
                std::string damaged = whole;
                damaged[at] = change;
                (void)PropertyList::parse(damaged);
            }
        }
    }
}

TEST(PropertyList, HostileInputIsRefused) {
    EXPECT_TRUE(PropertyList::parse(binary({arrayOf(2, 1), "\x08"})));
    EXPECT_FALSE(PropertyList::parse(binary({arrayOf(1, 1), arrayOf(1, 0)}))) << "a cycle";
    EXPECT_FALSE(PropertyList::parse(binary({arrayOf(1, 7)}))) << "no such object";
    EXPECT_TRUE(PropertyList::parse(binary({"\xD1\x01\x02", ascii("ab"), "\x08"})));
    EXPECT_FALSE(PropertyList::parse(binary({"\xD1\x01\x02", ascii("a\0"s), "\x08"}))) << "a NUL in a key";
    EXPECT_FALSE(PropertyList::parse("<plist><dict><key>a&#x0;b</key><true/></dict></plist>"));
    std::vector<std::string> doubling;
    for (int i = 1; i <= 60; ++i) doubling.push_back(arrayOf(14, i));
    doubling.emplace_back("\x08");
    EXPECT_FALSE(PropertyList::parse(binary(doubling))) << "unfolds to 14 to the 60th";

    const auto nested = [](int depth) {
        return "<plist>" + repeated("<array>", depth) + repeated("</array>", depth) + "</plist>";
    };
    EXPECT_TRUE(PropertyList::parse(nested(100)));
    EXPECT_FALSE(PropertyList::parse(nested(300000)));
    for (const char* hidden : {"<array><!-- </array> -->", "<array><string><![CDATA[</array>]]></string>",
                               "<array><string a=\"></array>\">x</string>", "<array a=\"/>\">",
                               "<array><? > </array> ?>", "<array><!DOCTYPE x [ </array> ]>"}) {
        EXPECT_FALSE(PropertyList::parse("<plist>" + repeated(hidden, 100000))) << hidden;
    }
    EXPECT_FALSE(PropertyList::parse("<plist><string>" + std::string(64 << 20, 'x') + "</string></plist>"));
    EXPECT_FALSE(PropertyList::parse("<plist><array>" + repeated("<true/>", 1 << 20) + "</array></plist>"));
    EXPECT_TRUE(PropertyList::parse(binary({"\x4F\x12\x03"s + std::string((3 << 24) + 3, '\0')})));
}

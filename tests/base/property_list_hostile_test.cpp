#include "base/property_list.h"

#include "samples.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using namespace std::string_literals;

/// A binary property list of these objects, the first as root; offsets and references take one byte each.
std::string binary(const std::vector<std::string>& objects, unsigned char top = 0) {
    std::string out = "bplist00", offsets;
    for (const auto& object : objects) {
        offsets += static_cast<char>(out.size());
        out += object;
    }
    const auto table = static_cast<char>(out.size());
    out += offsets + "\0\0\0\0\0\0\1\1"s;
    out += std::string(7, '\0') + static_cast<char>(objects.size());
    out += std::string(7, '\0') + static_cast<char>(top);
    return out + std::string(7, '\0') + table;
}

TEST(BinaryPropertyList, ReadsWhatOtherWritersWrite) {
    const std::pair<std::string, PropertyListValue> cases[] = {
        {binary({"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"s}), -2},
        {binary({"\x14"s + std::string(16, '\xFF')}), -1},
        {binary({"\x22\x3F\xC0\0\0"s}), 1.5},
        {binary({"\x5F\x10\x02hi"s}), "hi"},
        {binary({"\x62\0\x41\xD8\x00"s}), "A\uFFFD"},
        {binary({"\xC1\x01"s, "\x09"s}), PropertyListArray{true}},
        {binary({"\xD2\1\1\2\3"s, "\x51k"s, "\x08"s, "\x09"s}), PropertyListDictionary{{"k", true}}},
        {binary({"\xA2\1\1"s, "\xA0"s}),
         PropertyListArray{PropertyListValue(PropertyListArray{}), PropertyListValue(PropertyListArray{})}},
    };
    for (const auto& [bytes, expected] : cases) {
        const auto value = parsePropertyList(bytes);
        ASSERT_TRUE(value) << testing::PrintToString(bytes);
        EXPECT_EQ(*value, expected) << testing::PrintToString(bytes);
    }
}

TEST(BinaryPropertyList, RefusesWhatIsMalformed) {
    const auto patched = [](std::size_t fromEnd, char byte) {
        auto bytes = binary({"\x08"s});
        bytes[bytes.size() - fromEnd] = byte;
        return bytes;
    };
    const std::pair<const char*, std::string> cases[] = {
        {"header only", "bplist00"},
        {"more objects than offsets", patched(24, 0x7F)},
        {"offsets without width", patched(26, 0)},
        {"table behind the end", patched(1, 0x7F)},
        {"top object out of range", binary({"\x08"s}, 1)},
        {"reference out of range", binary({"\xA1\x05"s})},
        {"contains itself", binary({"\xA1\x00"s})},
        {"a longer cycle", binary({"\xA1\x01"s, "\xD1\2\0"s, "\x51k"s})},
        {"array longer than the file", binary({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s})},
        {"count that is no integer", binary({"\x5F\x51k"s})},
        {"key that is no string", binary({"\xD1\1\1"s, "\x10\x01"s})},
        {"high bytes in ASCII", binary({"\x51\xE9"s})},
        {"null", binary({"\0"s})},
        {"date that is not a number", binary({"\x33\x7F\xF8\0\0\0\0\0\0"s})},
        {"integer of 65 bits", binary({"\x14\0\0\0\0\0\0\0\1"s + std::string(8, '\0')})},
    };
    for (const auto& [why, bytes] : cases)
        EXPECT_EQ(parsePropertyList(bytes).error(), PropertyListError::malformed) << why;
}

TEST(BinaryPropertyList, SharedObjectsCountEachTimeTheyAreReached) {
    std::vector<std::string>
        levels; // ten references each to the next object: 10^24 values in a few hundred bytes
    for (char next = 1; next <= 14; ++next)
        levels.push_back("\xAA"s + std::string(10, next));
    levels.push_back("\xA0");
    EXPECT_EQ(parsePropertyList(binary(levels), {.nodes = 100'000}).error(), PropertyListError::tooLarge);

    // The same with the bytes of a single string.
    const auto text = binary({"\xAE"s + std::string(14, '\1'), "\x5F\x10\x40"s + std::string(64, 'x')});
    EXPECT_TRUE(parsePropertyList(text, {.bytes = 14 * 64}));
    EXPECT_EQ(parsePropertyList(text, {.bytes = 14 * 64 - 1}).error(), PropertyListError::tooLarge);
}

TEST(PropertyList, KeepsItsLimits) {
    PropertyListValue deep = PropertyListArray{};
    for (int i = 1; i < 128; ++i)
        deep = PropertyListArray{std::move(deep)};
    const auto deeper = PropertyListValue(PropertyListArray(1, deep));
    const PropertyListValue three = PropertyListArray{1, 2};
    for (const auto write : {writeBinaryPropertyList, writeXmlPropertyList}) {
        EXPECT_TRUE(parsePropertyList(write(deep)));
        EXPECT_EQ(parsePropertyList(write(deeper)).error(), PropertyListError::tooLarge);
        EXPECT_TRUE(parsePropertyList(write(three), {.nodes = 3}));
        EXPECT_EQ(parsePropertyList(write(three), {.nodes = 2}).error(), PropertyListError::tooLarge);
        const auto size = write(three).size();
        EXPECT_TRUE(parsePropertyList(write(three), {.bytes = size}));
        EXPECT_EQ(parsePropertyList(write(three), {.bytes = size - 1}).error(), PropertyListError::tooLarge);
    }
    std::string bottomless = "<plist>";
    for (int i = 0; i < 200'000; ++i)
        bottomless += "<array>";
    EXPECT_EQ(parsePropertyList(bottomless).error(), PropertyListError::tooLarge);
}

TEST(XmlPropertyList, ExpandsNoEntities) {
    const auto with = [](const std::string& subset, const std::string& body) {
        return "<?xml version=\"1.0\"?><!DOCTYPE plist [" + subset + "]><plist>" + body + "</plist>";
    };
    std::string laughs = "<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 10; ++i) {
        const auto last = "&a" + std::to_string(i - 1) + ";";
        laughs += "<!ENTITY a" + std::to_string(i) + " \"" + last + last + last + last + last + last + "\">";
    }
    for (const auto& bytes :
         {with(laughs, "<string>&a9;</string>"), with("<!ENTITY x \"y\">", "<string>unused</string>"),
          with("<!ENTITY x SYSTEM \"file:///etc/passwd\">", "<string>&x;</string>"),
          with("<!ENTITY % p \"<!ENTITY q 'r'>\">%p;", "<true/>"), with("", "<string>&x;</string>"),
          "<!DOCTYPE plist SYSTEM \"file:///etc/passwd\"><plist><string>&x;</string></plist>"s})
        EXPECT_EQ(parsePropertyList(bytes).error(), PropertyListError::malformed) << bytes;
    EXPECT_TRUE(parsePropertyList(with("", "<true/>")));
}

TEST(PropertyList, SurvivesDamage) {
    const PropertyListLimits limits{.bytes = 1 << 20, .nodes = 10'000, .depth = 64};
    for (unsigned seed = 1; seed < 6; ++seed) {
        const auto value = test::PropertyListGenerator(seed).value();
        for (const auto& whole : {writeBinaryPropertyList(value), writeXmlPropertyList(value)}) {
            const auto complete = whole.size() - (whole.ends_with('\n') ? 1 : 0);
            for (std::size_t kept = 0; kept < complete; kept += 1 + kept / 300)
                EXPECT_FALSE(parsePropertyList(whole.substr(0, kept), limits)) << seed << " cut at " << kept;

            std::mt19937 random(seed);
            for (int round = 0; round < 1500; ++round) {
                auto damaged = whole;
                for (auto flips = random() % 8; flips-- > 0;)
                    damaged[random() % damaged.size()] ^= static_cast<char>(1 << random() % 8);
                // What was parsed can be written and parsed again.
                if (const auto read = parsePropertyList(damaged, limits)) {
                    EXPECT_TRUE(parsePropertyList(writeBinaryPropertyList(*read)));
                    EXPECT_TRUE(parsePropertyList(writeXmlPropertyList(*read)));
                }
            }
        }
    }
}

} // namespace
} // namespace tidwen

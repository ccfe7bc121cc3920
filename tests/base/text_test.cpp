#include "base/text.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using namespace std::string_literals;

using Change = std::string (*)(std::string_view);

TEST(Text, ChangesTextByRulesOfNoLanguage) {
    const Change printed = [](std::string_view text) { return printable(text); };
    const struct {
        const char* why;
        Change change;
        std::string given, expected;
    } cases[] = {
        {"ASCII", lowercased, "My-App 2[", "my-app 2["},
        {"I with dot above", lowercased, "İ", "i̇"},
        {"final sigma", lowercased, "ΣΑΣ", "σας"},
        {"invalid bytes stay harmless", lowercased, "A\xFF", "a\uFFFD"},
        {"decomposed", nfc, "e\u0301", "é"},
        {"letters and numbers", canonicalForm, "My-App 2", "myapp2"},
        {"composed equals decomposed", canonicalForm, "Cafe\u0301 Über", "caféüber"},
        {"other scripts and digits", canonicalForm, "日本語・٣!", "日本語٣"},
        {"an accent that composes with nothing", canonicalForm, "x\u0301y", "xy"},
        {"fractions are numbers", canonicalForm, "1½", "1½"},
        {"outer white space", trimmed, " \t\n a b \u00A0\u3000\r\n", "a b"},
        {"cut off", validUtf8, "a\xE2\x82", "a\uFFFD"},
        {"overlong and surrogate", validUtf8, "\xC0\xAF|\xED\xA0\x80", "\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD"},
        {"control characters", printed, "a\n\r\t\x1B[2J\x7F\u0085", "a\\n\\r\\t\\u{1b}[2J\\u{7f}\\u{85}"},
        {"a zero byte", printed, "a\0b"s, "a\\u{0}b"},
        {"direction marks", printed, "x\u202Egpj.exe\u2066\u200F", "x\\u{202e}gpj.exe\\u{2066}\\u{200f}"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        EXPECT_EQ(c.change(c.given), c.expected);
        EXPECT_TRUE(isValidUtf8(c.change(c.given)));
    }
}

TEST(Text, FileNamesThatADiskTakesForOneHaveOneKey) {
    const std::string groups[][3] = {
        {"Straße", "STRASSE", "strasse"},
        {"é", "E\u0301", "É"},
        {"Marlin\u200D", "\u200Fmarlin", "MAR\u2060LIN"},
        {"Ελλάς", "ΕΛΛΆΣ", "ελλάσ"},
    };
    for (const auto& [a, b, c] : groups) {
        EXPECT_EQ(fileNameKey(a), fileNameKey(b));
        EXPECT_EQ(fileNameKey(a), fileNameKey(c));
    }
    EXPECT_NE(fileNameKey("a b"), fileNameKey("ab"));
}

TEST(Text, MeasuresText) {
    const struct {
        std::string text;
        std::size_t characters, columns;
    } cases[] = {
        {"", 0, 0},         {"abc", 3, 3},  {"é", 1, 1},
        {"e\u0301", 2, 1},  {"日本", 2, 4}, {"😀", 1, 2},
        {"a\u200Bb", 3, 2}, {"한", 1, 2},   {"\u1112\u1161\u11AB", 3, 2},
        {"\xFF\xFE", 2, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(characterCount(c.text), c.characters);
        EXPECT_EQ(displayWidth(c.text), c.columns);
    }
    EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));
}

TEST(Text, EscapesWhatATerminalObeysAndAReaderDoesNotSee) {
    const std::pair<const char*, std::string> escaped[] = {
        {"\x1b", "1b"},     {"\x7f", "7f"},     {"\xc2\x80", "80"}, {"\xc2\x9b", "9b"}, {"\xc2\x9f", "9f"},
        {"\u061c", "61c"},  {"\u200e", "200e"}, {"\u200f", "200f"}, {"\u2028", "2028"}, {"\u2029", "2029"},
        {"\u202a", "202a"}, {"\u202e", "202e"}, {"\u2066", "2066"}, {"\u2069", "2069"}, {"\ufeff", "feff"},
        {"\u00ad", "ad"},   {"\u200b", "200b"}, {"\u200d", "200d"}, {"\u2060", "2060"}, {"\u3164", "3164"}};
    for (const auto& [text, number] : escaped) {
        EXPECT_EQ(printable(std::string("a") + text), "a\\u{" + number + "}");
        EXPECT_EQ(printable(text, EscapeForm::json), "\\u" + std::string(4 - number.size(), '0') + number);
    }
    for (const auto* text : {"plain", "\u00A0\u00E9\u65E5\U0001F600"})
        EXPECT_EQ(printable(text), text);
    for (const auto* shown : {"\u2764\uFE0F", "\U0001F468\u200D\U0001F469", "\u2764\uFE0F\u200D\U0001F525",
                              "\U0001F469\U0001F3FD\u200D\U0001F680"})
        EXPECT_EQ(printable(shown), shown) << "one emoji";
    EXPECT_EQ(printable("1\uFE0F"), "1\\u{fe0f}");
    EXPECT_EQ(printable("\u2764\uFE0F\uFE0F"), "\u2764\uFE0F\\u{fe0f}");
    EXPECT_EQ(printable("\u2764\u200D"), "\u2764\\u{200d}");
    EXPECT_EQ(printable("\u200D\u2764"), "\\u{200d}\u2764");
    EXPECT_EQ(printable("\U000E0041"), "\\u{e0041}");
    EXPECT_EQ(printable("\U000E0041", EscapeForm::json), "\\udb40\\udc41");
    EXPECT_EQ(printable("a\n\xFF"), "a\\n\uFFFD");
}

TEST(Text, OrdersListsAsPeopleReadThem) {
    std::vector<std::string> names{"item 10", "Zebra", "item 9", "äpfel", "Apple", "apple", "zoo"};
    std::sort(names.begin(), names.end(),
              [](const auto& a, const auto& b) { return compareForDisplay(a, b) < 0; });
    EXPECT_EQ(names,
              (std::vector<std::string>{"äpfel", "apple", "Apple", "item 9", "item 10", "Zebra", "zoo"}));
    names.insert(names.end(), {"", "\xFF", "e\u0301", "é", std::string("a\0b", 3), std::string(500, 'x')});
    for (const auto* locale : {"en", "sv", "no such language!"})
        for (const auto& a : names)
            for (const auto& b : names)
                EXPECT_EQ(displayOrderKey(a, locale) < displayOrderKey(b, locale),
                          compareForDisplay(a, b, locale) < 0)
                    << a << " and " << b << " in " << locale;
    EXPECT_GT(compareForDisplay("äpfel", "zoo", "sv"), 0);
    EXPECT_NE(compareForDisplay("e\u0301", "é"), 0) << "texts that differ in bytes are never equal";
    EXPECT_LT(compareForDisplay("a", "b", "no such language!"), 0);
}

} // namespace
} // namespace tidwen

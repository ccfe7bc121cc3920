#include "base/strings_file.h"

#include "base/property_list.h"
#include "samples.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

using test::utf16;
using Words = std::map<std::string, std::string>;

TEST(StringsFile, ReadsTheTextForm) {
    const std::pair<std::string, Words> cases[] = {
        {"", {}},
        {"/* one\n two */\"a\"/**/=//x\n\"b\"\n;\"c %@\"=\"d\";\n", {{"a", "b"}, {"c %@", "d"}}},
        {R"("q" = "\"\\\n\t\r\'";)", {{"q", "\"\\\n\t\r'"}}},
        {R"("u" = "\U00e9 \u20AC \Ud83d\UDE00";)", {{"u", "é € 😀"}}},
        {R"("lone" = "\Ud83d";)", {{"lone", "\uFFFD"}}},
        {R"("o" = "\101\7z \é\x";)", {{"o", "A\7z éx"}}},
        {"CFBundleName = 'Marlin Notes';", {{"CFBundleName", "Marlin Notes"}}},
        {"\"same\";", {{"same", "same"}}},
        {"\"twice\" = \"1\"; \"twice\" = \"2\";", {{"twice", "2"}}},
        {"\xEF\xBB\xBF\"a\" = \"é日\";", {{"a", "é日"}}},
        {"\"bad\" = \"\xFF\";", {{"bad", "\uFFFD"}}},
        {utf16("\"a\" = \"b\";", true), {{"a", "b"}}},
        {utf16("/* x */ \"a\" = \"b\";", false), {{"a", "b"}}},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(parseStringsFile(text), expected) << text;
}

TEST(StringsFile, OneFaultInvalidatesAll) {
    for (const auto* text :
         {"\"a\" = \"b\"", "\"a\" = \"b\"; \"c\" = \"d\" \"e\" = \"f\";", "\"a\" \"b\";", "\"a",
          "\"a\" = \"b", "\"a\" = ;", "= \"b\";", "/* \"a\" = \"b\";", "\"a\" = \"\\U00g0\";",
          "\"a\" = \"\\U12", "\"a\" = \"\\", "\"a\" = b c;", "{ }", "<plist><string>x</string>", "bplist00"})
        EXPECT_EQ(parseStringsFile(text), std::nullopt) << text;
}

TEST(StringsFile, ReadsCompiledFiles) {
    const PropertyListDictionary list{{"a", "b"}, {"plural", PropertyListDictionary{{"other", "x"}}}};
    const Words expected{{"a", "b"}};
    EXPECT_EQ(parseStringsFile(writeBinaryPropertyList(list)), expected);
    EXPECT_EQ(parseStringsFile(writeXmlPropertyList(list)), expected);
    EXPECT_EQ(parseStringsFile(writeXmlPropertyList(PropertyListArray{})), std::nullopt);
}

} // namespace
} // namespace tidwen

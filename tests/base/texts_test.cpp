#include "base/texts.h"

#include "base/property_list.h"
#include "base/strings_file.h"
#include "samples.h"
#include "support/matchers.h"
#include "support/temporary_folder.h"
#include "support/trees.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

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

class TextsTest : public testing::Test {
  protected:
    void write(const std::string& file, const std::string& content) {
        test::writeFile(folder_.path() / file, content);
    }

    void writePlural(const std::string& language, const std::string& key, const std::string& format,
                     PropertyListDictionary forms) {
        write(language + ".lproj/Localizable.stringsdict",
              writeXmlPropertyList(
                  PropertyListDictionary{{key, PropertyListDictionary{{"NSStringLocalizedFormatKey", format},
                                                                      {"n", std::move(forms)}}}}));
    }

    Texts load(const std::string& language) { return Texts::load(folder_.path(), language); }

    test::TemporaryFolder folder_;
};

TEST_F(TextsTest, FillsPlaceholders) {
    write("en.lproj/Localizable.strings", R"("plain" = "Plain";
        "one %@" = "<%@>"; "turned %@ %lld" = "%2$lld of %1$@"; "per %lld" = "%lld%% %x 100%";)");
    const auto texts = load("en");
    const std::tuple<const char*, std::vector<std::string>, const char*> cases[] = {
        {"plain", {"ignored"}, "Plain"},
        {"one %@", {"a"}, "<a>"},
        {"one %@", {"100%@ %1$@"}, "<100%@ %1$@>"}, // an inserted argument is not parsed again
        {"one %@", {}, "<%@>"},
        {"turned %@ %lld", {"x", "3"}, "3 of x"},
        {"per %lld", {"5"}, "5% %x 100%"},
        {"no words %@ %2$@", {"a", "b"}, "no words a b"},
    };
    for (const auto& [key, arguments, expected] : cases)
        EXPECT_EQ(texts.text(key, arguments), expected) << key;
    EXPECT_EQ(Texts().text("key.alone"), "key.alone");
    EXPECT_THAT(texts.problems(), IsEmpty());
}

TEST_F(TextsTest, ChoosesThePluralFormOfTheLanguage) {
    write("en.lproj/Localizable.strings", "");
    write("pl.lproj/Localizable.strings", "");
    writePlural("en", "k %lld %@", "%1$#@n@ (%2$@)",
                {{"zero", "none"}, {"one", "%lld file"}, {"other", "%lld files"}});
    const auto english = load("en");
    EXPECT_EQ(english.text("k %lld %@", {"0", "x"}), "none (x)");
    EXPECT_EQ(english.text("k %lld %@", {"1", "x"}), "1 file (x)");
    EXPECT_EQ(english.text("k %lld %@", {"many", "x"}), "many files (x)");
    EXPECT_EQ(english.text("k %lld %@"), "%lld files (%2$@)");

    EXPECT_EQ(load("pl").text("k %lld %@", {"1", "x"}), "1 file (x)")
        << "English fallbacks use English plural rules";
    writePlural("pl", "k %lld %@", "%#@n@",
                {{"one", "%lld plik"}, {"few", "%lld pliki"}, {"other", "%lld plików"}});
    const auto polish = load("pl");
    EXPECT_EQ(polish.text("k %lld %@", {"1", "x"}), "1 plik");
    EXPECT_EQ(polish.text("k %lld %@", {"22", "x"}), "22 pliki");
    EXPECT_EQ(polish.text("k %lld %@", {"12", "x"}), "12 plików");
}

TEST_F(TextsTest, LaysLanguagesOverEnglish) {
    write("en.lproj/Localizable.strings", "a = \"english a\"; b = \"english b\"; c = \"english c\";");
    writePlural("en", "n %lld", "%#@n@", {{"one", "one"}, {"other", "other"}});
    write("pt.lproj/Localizable.strings", "b = \"português b\"; c = \"português c\"; \"n %lld\" = \"%lld\";");
    write("pt-BR.lproj/Localizable.strings", "c = \"brasileiro c\";");
    const auto texts = load("pt-BR");
    EXPECT_EQ(texts.text("a"), "english a");
    EXPECT_EQ(texts.text("b"), "português b");
    EXPECT_EQ(texts.text("c"), "brasileiro c");
    EXPECT_EQ(texts.text("n %lld", {"1"}), "1") << "translations take precedence over English plurals";
    EXPECT_THAT(texts.keys(), ElementsAre("a", "b", "c", "n %lld"));
    EXPECT_THAT(texts.problems(), IsEmpty());
}

TEST_F(TextsTest, SpeaksAnotherLanguageToWhoeverReadsMeanwhile) {
    write("en.lproj/Localizable.strings", "a = \"one\";");
    write("pt.lproj/Localizable.strings", "a = \"um\";");
    const auto english = load("en"), portuguese = load("pt");
    Texts texts = english;
    std::atomic<bool> isDone = false;
    std::thread reader([&, &held = std::as_const(texts)] {
        while (!isDone)
            if (const auto word = held.text("a"); word != "one" && word != "um") ADD_FAILURE() << word;
    });
    for (int i = 0; i < 1'000; ++i)
        texts = i % 2 == 0 ? portuguese : english;
    isDone = true;
    reader.join();
    EXPECT_EQ(texts.text("a"), "one");
    EXPECT_EQ(portuguese.text("a"), "um");
}

TEST_F(TextsTest, SaysWhatWasWrong) {
    EXPECT_THAT(load("en").problems(), ElementsAre("en.lproj/Localizable.strings: missing"));
    write("en.lproj/Localizable.strings", "\"a\" = \"b\"");
    write("en.lproj/Localizable.stringsdict", "not a property list");
    EXPECT_THAT(load("en").problems(), ElementsAre("en.lproj/Localizable.strings: malformed",
                                                   "en.lproj/Localizable.stringsdict: malformed"));
    write("en.lproj/Localizable.strings", "");
    writePlural("en", "k", "%#@missing@", {{"other", "x"}});
    EXPECT_EQ(load("en").problems().size(), 1u);
    EXPECT_EQ(load("en").text("k"), "k");
    writePlural("en", "k", "%#@n@", {{"one", "no other"}});
    EXPECT_EQ(load("en").problems().size(), 1u);

    std::filesystem::remove(folder_.path() / "en.lproj/Localizable.stringsdict");
    EXPECT_THAT(load("tlh").problems(), ElementsAre("tlh.lproj/Localizable.strings: missing"));
    EXPECT_EQ(load("../en").language(), "en");
    EXPECT_EQ(load("").problems().size(), 1u);
}

} // namespace
} // namespace tidwen

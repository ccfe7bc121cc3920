// Every shipped language: its files are well-formed, and its texts have the placeholders that their keys
// declare.

#include "base/strings_file.h"
#include "base/text_format.h"
#include "base/texts.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

namespace tidwen {
namespace {

using Kind = FormatPart::Kind;

/// The kind of argument expected at each position.
std::vector<Kind> argumentKinds(std::string_view format) {
    std::vector<Kind> kinds;
    std::size_t next = 0;
    for (const auto& part : parseFormat(format)) {
        if (part.kind == Kind::words) continue;
        const auto position = part.position ? *part.position : next++;
        kinds.resize(std::max(kinds.size(), position + 1), Kind::words);
        kinds[position] = part.kind;
    }
    return kinds;
}

TEST(Words, AreCompleteAndAskForWhatTheirKeysPromise) {
    const auto english = Texts::load(TIDWEN_RESOURCES, "en").keys();
    ASSERT_GT(english.size(), 250u);
    for (const auto& folder : std::filesystem::directory_iterator(TIDWEN_RESOURCES)) {
        if (folder.path().extension() != ".lproj") continue;
        const auto texts = Texts::load(TIDWEN_RESOURCES, folder.path().stem().string());
        EXPECT_THAT(texts.problems(), testing::IsEmpty());
        EXPECT_EQ(texts.keys(), english) << folder.path() << " has a key that English lacks";
        std::ifstream file(folder.path() / "Localizable.strings");
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        const auto strings = parseStringsFile(bytes);
        ASSERT_TRUE(strings);
        for (const auto& [key, words] : *strings)
            EXPECT_EQ(argumentKinds(words), argumentKinds(key)) << folder.path() << key;
        for (const auto& key : english) // filled in, which also tests the plural forms
            for (const char number : {'1', '7'}) {
                SCOPED_TRACE(texts.language() + ": " + key);
                std::vector<std::string> arguments; // a value that occurs in no text
                for (const auto kind : argumentKinds(key))
                    arguments.push_back(kind == Kind::number ? std::string(arguments.size() + 1, number)
                                                             : "⟦" + std::to_string(arguments.size()) + "⟧");
                const auto words = texts.text(key, arguments);
                EXPECT_FALSE(words.empty());
                EXPECT_EQ(words.find('%'), words.npos) << words;
                for (const auto& argument : arguments)
                    EXPECT_NE(words.find(argument), words.npos) << words;
            }
    }
}

} // namespace
} // namespace tidwen

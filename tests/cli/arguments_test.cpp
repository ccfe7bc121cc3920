#include "base/message.h"
#include "base/texts.h"
#include "cli/arguments.h"
#include "operations/admin_batch.h"

#include <gtest/gtest.h>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {
namespace {

const std::vector<CommandSyntax>& commands() {
    static const std::vector<CommandSyntax> all = {
        {.name = "apps", .summary = "List"},
        {.name = "remove",
         .summary = "Remove",
         .operandName = "APP",
         .minimumOperands = 1,
         .maximumOperands = anyNumber,
         .options = {{"--select", "ITEMS", ""}, {"--dry-run", "", ""}}},
        {.name = "undo", .summary = "Undo", .operandName = "RUN", .minimumOperands = 1, .maximumOperands = 1},
    };
    return all;
}

tl::expected<Arguments, EarlyExit> parse(std::vector<const char*> words,
                                         const char* defaultVolume = nullptr) {
    words.insert(words.begin(), "tidwen");
    return parseArguments(static_cast<int>(words.size()), words.data(), commands(), Texts(), defaultVolume);
}

TEST(Arguments, GlobalOptionsStandBeforeOrAfterTheCommand) {
    const std::vector<std::vector<const char*>> orders = {
        {"--volume", "v", "--home", "/Users/a", "--json", "--yes", "--verbose", "remove", "A", "B"},
        {"remove", "A", "B", "--volume", "v", "--home", "/Users/a", "--json", "--yes", "--verbose"},
        {"--volume=v", "remove", "A", "--json", "B", "--home=/Users/a", "--yes", "--verbose"},
    };
    for (const auto& words : orders) {
        const auto arguments = parse(words);
        ASSERT_TRUE(arguments) << arguments.error().text;
        EXPECT_EQ(arguments->command, "remove");
        EXPECT_EQ(arguments->operands, (std::vector<std::string>{"A", "B"}));
        EXPECT_EQ(arguments->volume, "v");
        EXPECT_EQ(arguments->home, "/Users/a");
        EXPECT_TRUE(arguments->json && arguments->yes && arguments->verbose);
        EXPECT_TRUE(arguments->options.empty());
    }
}

TEST(Arguments, OptionsOfACommandDoNotSwallowItsOperands) {
    const auto arguments =
        parse({"remove", "--select", "/a b,c", "X", "--select", "two", "--dry-run", "--", "-odd"});
    ASSERT_TRUE(arguments) << arguments.error().text;
    EXPECT_EQ(arguments->operands, (std::vector<std::string>{"X", "-odd"}));
    EXPECT_EQ(arguments->values("--select"), (std::vector<std::string>{"/a b,c", "two"}));
    EXPECT_TRUE(arguments->has("--dry-run"));
    EXPECT_FALSE(arguments->json || arguments->yes || arguments->volume);
}

TEST(Arguments, AFlagTakesNoValue) {
    for (const char* word : {"--yes=false", "--yes=true", "--yes=", "--yes={}", "--json=1", "--verbose=0",
                             "--dry-run=no", "--version=1", "--help=false", "-h=no"})
        for (const auto& words :
             std::vector<std::vector<const char*>>{{"remove", "X", word}, {"remove", word, "--", "X"}}) {
            const auto arguments = parse(words);
            ASSERT_FALSE(arguments) << word;
            EXPECT_EQ(arguments.error().status, 2) << word;
            EXPECT_NE(arguments.error().text.find("cli.usage.takesNoValue"), std::string::npos) << word;
        }
    EXPECT_EQ(parse({"--yes=false", "apps"}).error().status, 2);
    for (const auto& words : std::vector<std::vector<const char*>>{
             {"--volume=", "apps"}, {"apps", "--home="}, {"--volume", "", "apps"}})
        EXPECT_EQ(parse(words).error().reason.key, "cli.usage.needsValue %@") << words[0];
    const auto value = parse({"remove", "--select", "--yes=false", "X", "--", "--yes=false"});
    ASSERT_TRUE(value) << value.error().text;
    EXPECT_FALSE(value->yes) << "an option's value or an operand is no flag";
    EXPECT_EQ(value->values("--select"), std::vector<std::string>{"--yes=false"});
}

TEST(Arguments, TheEnvironmentNamesTheVolumeWhereNoOptionDoes) {
    EXPECT_EQ(parse({"apps"}, "v")->volume, "v");
    EXPECT_EQ(parse({"apps", "--volume", "w"}, "")->volume, "w");
    EXPECT_EQ(parse({"apps"}, "").error().reason, (Message{"cli.usage.needsValue %@", {volumeVariable}}));
}

TEST(Arguments, EndsEarlyWithTheRightStatus) {
    const struct {
        std::vector<const char*> words;
        int status;
        const char* text; ///< part of the output
    } cases[] = {
        {{"--version"}, 0, "tidwen "},
        {{"apps", "--version"}, 0, "tidwen "},
        {{"--help"}, 0, "remove APP..."},
        {{"remove", "--help"}, 0, "--dry-run"},
        {{}, 2, "usage"},
        {{"fly"}, 2, "unknownCommand fly"},
        {{"fl\x1b[2Jy\u202e"}, 2, "unknownCommand fl\\u{1b}[2Jy\\u{202e}"},
        {{"apps", "ex\xc2\x9btra"}, 2, "ex\\u{9b}tra"},
        {{"apps", "extra"}, 2, "extra"},
        {{"apps", "--dry-run"}, 2, "--dry-run"},
        {{"remove"}, 2, "APP"},
        {{"undo", "1", "2"}, 2, "2"},
        {{"apps", "--volume"}, 2, "needsValue --volume"},
        {{"--dry-run", "remove", "X"}, 2, "behindCommand --dry-run"},
        {{"--", "apps"}, 2, "cli.usage.noCommand"},
        {{"--json", "--volume", "apps"}, 2, "commandIsValue --volume apps"},
        {{"remove"}, 2, "usage tidwen remove [OPTION...] APP...\ncli.help.try tidwen help remove"},
        {{"help"}, 0, "remove APP..."},
        {{"help", "remove"}, 0, "--dry-run"},
        {{"help", "help"}, 0, "remove APP..."},
        {{"--json", "help"}, 0, "remove APP..."},
        {{"--volume", "V", "help", "remove", "--yes"}, 0, "--dry-run"},
        {{"help", "--frob"}, 2, "unknownOption --frob"},
        {{"--volume", "help", "fly"}, 2, "unknownCommand fly"},
        {{"help", "fly"}, 2, "unknownCommand fly"},
        {{"help", "remove", "Kip"}, 2, "tooMany Kip"},
        {{"--bogus", "apps"}, 2, "--bogus"},
        {{"remvoe", "X"}, 2, "didYouMean remove"},
        {{"remove", "X", "--slect=a"}, 2, "didYouMean --select"},
        {{"remove", "X", "--xyzzy"}, 2, "unknownOption --xyzzy\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto arguments = parse(c.words);
        ASSERT_FALSE(arguments);
        EXPECT_EQ(arguments.error().status, c.status);
        EXPECT_NE(arguments.error().text.find(c.text), std::string::npos) << arguments.error().text;
    }
}

} // namespace
} // namespace tidwen

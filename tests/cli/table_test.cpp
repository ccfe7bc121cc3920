#include "cli/console.h"
#include "cli/table.h"

#include "base/step_progress.h"
#include "base/text.h"
#include "base/texts.h"
#include "cli/labels.h"
#include "cli/line_layout.h"
#include "cli/suggestion.h"
#include "support/temporary_folder.h"
#include "support/trees.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

/// The output of `print` on a console that is no terminal.
template<class Print>
std::string printed(Print print) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "out";
    {
        const std::unique_ptr<std::FILE, decltype(&std::fclose)> out(std::fopen(file.c_str(), "w"),
                                                                     std::fclose);
        Console console(stdin, out.get(), stderr);
        print(console);
        EXPECT_TRUE(console.finish());
    }
    return test::contentOf(file);
}

TEST(Table, ColumnsStandBelowOneAnotherAsATerminalShowsThem) {
    using enum Table::Align;
    Table table({left, right, left, left});
    table.add({{"Name", Style::strong}, {"Size"}, {""}, {"Path"}});
    table.add({{"\u5199\u4f5c"}, {"12 MB"}, {""}, {"/a"}}); // two characters, four columns
    table.add({{"Cafe\u0301"}, {"7"}, {""}, {"/b"}});       // five code points, four columns
    table.add({{"x\n"}});
    EXPECT_EQ(printed([&](Console& console) { table.print(console, 1); }), " Name   Size  Path\n"
                                                                           " \u5199\u4f5c  12 MB  /a\n"
                                                                           " Cafe\u0301      7  /b\n"
                                                                           " x\\n\n");
}

std::string laidOut(const std::vector<StyledText>& line, std::size_t columns) {
    std::string text;
    for (const auto& each : wrapped(line, columns)) {
        std::string shown;
        for (const auto& span : each)
            shown += span.text;
        EXPECT_LE(displayWidth(shown), columns) << shown;
        text += shown + "|";
    }
    return text;
}

TEST(Table, ARowTooLongForTheTerminalTakesTwoLinesAndIsNotCut) {
    Table table({Table::Align::right});
    for (const std::string name : {"notes", "sketch"})
        table.add({{"3"}, {"move"}, {"/Library/Caches/com.example." + name}, {"-> 0003/" + name}});
    std::string text;
    for (const auto& line : table.linesWithin(40, 1))
        text += laidOut(line, 40);
    EXPECT_EQ(text, " 3  move|     /Library/Caches/com.example.notes|         -> 0003/notes|"
                    " 3  move|     /Library/Caches/com.example.sketch|         -> 0003/sketch|");
}

TEST(LineLayout, BreaksBetweenWordsAndCutsWhatIsTooLong) {
    EXPECT_EQ(laidOut({{"  one two three"}, {"  four", Style::faint}}, 20), "  one two three|     four|");
    EXPECT_EQ(laidOut({{"[x]"}, {"  "}, {"/a b/c d"}, {"  why it is so"}}, 20),
              "[x]  /a b/c d  why|    it is so|");
    EXPECT_EQ(laidOut({{"move"}, {"  /a b/cc.plist -> 0001/"}}, 20), "move  /a b/cc.plist|    -> 0001/|");
    EXPECT_EQ(laidOut({{"  [x]"}, {"  /Library/Application Support/Corvella"}}, 20),
              "  [x]|     /Librar…orvella|");
    EXPECT_EQ(wrappedText("tidwen: /a: one two\nUsage", 12), "tidwen: /a:\n one two\nUsage");
    EXPECT_EQ(wrappedText("x /Users/alice/\u5199\u4f5c.app y", 12),
              "x\n /Users/alic\n e/\u5199\u4f5c.app\n y");
    const std::string row = "  add     one two \u5199\u4f5c\u5199\u4f5c\n  remove  two\n";
    EXPECT_EQ(wrappedText(row, 20),
              "  add     one two \u5199\n          \u4f5c\u5199\u4f5c\n  remove  two\n");
    EXPECT_EQ(wrappedText(row, 18), "  add\n    one two \u5199\u4f5c\u5199\n    \u4f5c\n  remove\n    two\n");
    const std::string command = "tidwen --volume /a/long/place scan Kip";
    EXPECT_EQ(withCommand("To see it now: " + command, command, 12), "To see it\n now:\n  " + command);
    EXPECT_EQ(withCommand("Next: " + command, command, 80), "Next: " + command);
    EXPECT_EQ(cutInMiddle("\u5199\u4f5c\u5199\u4f5c", 5), "\u5199…\u4f5c");
    EXPECT_EQ(laidOut({}, 20), "|");
    EXPECT_EQ(
        laidOut({{"\u300cKip\u300d\u306f\u77ed\u3044\u3001\u306e\u3067\u3001\u3067\u3059\u3002\u306f"}}, 20),
        "\u300cKip\u300d\u306f\u77ed\u3044\u3001\u306e|    \u3067\u3001\u3067\u3059\u3002\u306f|");
    EXPECT_EQ(wrappedText("\u306f\u77ed\u3044\u3067\u3059\u3002 [y/N] ", 11),
              "\u306f\u77ed\u3044\u3067\n \u3059\u3002 [y/N] ");
}

TEST(Progress, KeepsTheNumberOfTheStepWhereTheLineIsNarrow) {
    const StepProgress step = {19, 62, "search", "Support files"};
    const std::string work = "Looking for what belongs to Marlin Notes";
    for (const std::size_t columns : {40, 60, 200}) {
        const auto line = labels::progress(work, step, Texts(), columns);
        EXPECT_NE(line.find(" 19 62: "), std::string::npos) << line;
        EXPECT_LE(displayWidth(line), columns) << line;
        EXPECT_EQ(line.find("Marlin Notes 19 62: Support files") != std::string::npos, columns == 200)
            << line;
    }
}

TEST(Suggestion, IsTheWordThatComesClosest) {
    const std::vector<std::string> known = {"scan", "sample", "startup", "history", "pt-BR"};
    for (const auto& [word, meant] :
         std::vector<std::pair<std::string, std::optional<std::string>>>{{"scna", "scan"},
                                                                         {"SCAN", "scan"},
                                                                         {"PT", "pt-BR"},
                                                                         {"histroy", "history"},
                                                                         {"hstory", "history"},
                                                                         {"fly", {}},
                                                                         {"", {}},
                                                                         {std::string(1'000, 's'), {}}})
        EXPECT_EQ(closest(word, known), meant) << word;
}

TEST(Console, NothingFromOutsideMovesTheCursor) {
    const auto text = printed([](Console& console) {
        console.line({{"\x1b[2Jname\r\x07", Style::danger}, {" \u202egpj.exe"}, {"\xff"}});
    });
    for (const char control : {'\x1b', '\r', '\x07'})
        EXPECT_EQ(text.find(control), std::string::npos) << text;
    EXPECT_EQ(text.find("\u202e"), std::string::npos) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
}

} // namespace
} // namespace tidwen

#include "base/message.h"
#include "base/path.h"
#include "base/shell_word.h"
#include "operations/admin_batch.h"
#include "operations/privileged_runner.h"
#include "operations/recording_runner.h"
#include "operations/removal_operation.h"
#include "support/temporary_folder.h"
#include "support/trees.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using test::step;

/// The unmodified output of the real shell for a script.
std::string shellOutput(const std::string& script) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "batch";
    test::writeFile(file, script);
    FILE* pipe = popen(("/bin/sh '" + file.string() + "'").c_str(), "r");
    std::string output;
    char buffer[4096];
    while (const auto count = std::fread(buffer, 1, sizeof buffer, pipe))
        output.append(buffer, count);
    pclose(pipe);
    return output;
}

/// Parses the string literal of a "do shell script" as AppleScript does; empty for any other source.
std::string scriptInside(const std::string& source) {
    const std::string before = "do shell script \"";
    const std::string after = "\" with administrator privileges";
    if (!source.starts_with(before) || !source.ends_with(after)) return {};
    std::string script;
    for (std::size_t i = before.size(); i < source.size() - after.size(); ++i) {
        if (source[i] == '"') return {}; // an unescaped quote would end the literal here
        if (source[i] == '\\') ++i;
        script += source[i];
    }
    return script;
}

std::string randomText(std::mt19937& random) {
    static const std::string nasty = "'\"\\$`!*?[]{}()<>|&;#~-=\n\r\t /";
    std::string text(random() % 40, '\0');
    for (auto& c : text)
        c = random() % 2 ? nasty[random() % nasty.size()] : static_cast<char>(random() % 255 + 1);
    return text;
}

TEST(AdminBatch, AnyTextReachesTheShellUnchanged) {
    EXPECT_EQ(shellWord("it's"), R"('it'\''s')");

    std::mt19937 random(1);
    std::string script;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        const auto text = randomText(random);
        script += "printf '%s\\0' " + shellWord(text) + "\n";
        expected += text + '\0';
    }
    EXPECT_EQ(scriptInside(adminBatch::appleScript(script)), script);
    EXPECT_EQ(shellOutput(script), expected);
}

TEST(AdminBatch, LinesAreExactlyTheAgreedText) {
    const std::pair<RemovalOperation::Kind, const char*> cases[] = {
        {operation::QuitApplication{"com.example.app"}, R"(echo 'OP 7 OK')"},
        {operation::ResetPermissions{"com.example.it's"},
         R"(/usr/bin/tccutil reset All 'com.example.it'\''s' >/dev/null 2>&1 && echo 'OP 7 OK' || echo "OP 7 FAIL $?")"},
        {operation::Bootout{"com.example.daemon", true},
         R"(/bin/launchctl bootout system/'com.example.daemon' >/dev/null 2>&1; c=$?; if [ $c -eq 0 ] || [ $c -eq 3 ] || [ $c -eq 113 ]; then echo 'OP 7 OK'; else echo "OP 7 FAIL $c"; fi)"},
        {operation::Bootout{"com.example.agent", false},
         R"(/bin/launchctl bootout gui/501/'com.example.agent' >/dev/null 2>&1; c=$?; if [ $c -eq 0 ] || [ $c -eq 3 ] || [ $c -eq 113 ]; then echo 'OP 7 OK'; else echo "OP 7 FAIL $c"; fi)"},
        {operation::Bootstrap{Path("/Library/LaunchDaemons/a b.plist"), true},
         R"(/bin/launchctl bootstrap system '/Library/LaunchDaemons/a b.plist' >/dev/null 2>&1; c=$?; l=$(/usr/libexec/PlistBuddy -c 'Print :Label' '/Library/LaunchDaemons/a b.plist' 2>/dev/null); if [ $c -eq 0 ] || [ $c -eq 17 ] || { [ -n "$l" ] && /bin/launchctl print-disabled system | /usr/bin/grep -qF "\"$l\" => disabled"; }; then echo 'OP 7 OK'; else echo "OP 7 FAIL $c"; fi)"},
        {operation::Move{Path("/Library/Caches/a"), Path("/Users/alice/.Trash/Tidwen - A/0007/a")},
         R"(if /bin/mkdir -p '/Users/alice/.Trash/Tidwen - A/0007'; then if [ ! -e '/Users/alice/.Trash/Tidwen - A/0007/a' ] && [ ! -L '/Users/alice/.Trash/Tidwen - A/0007/a' ]; then /bin/mv '/Library/Caches/a' '/Users/alice/.Trash/Tidwen - A/0007/a' && echo 'OP 7 OK' || echo "OP 7 FAIL $?"; else echo 'OP 7 FAIL occupied'; fi; else echo "OP 7 FAIL $?"; fi)"},
        {operation::DeleteKeychainItem{"Marlin Notes", true},
         R"(n=0; while /usr/bin/security delete-generic-password -s 'Marlin Notes' /Library/Keychains/System.keychain >/dev/null 2>&1; do n=$((n+1)); done; while /usr/bin/security delete-internet-password -s 'Marlin Notes' /Library/Keychains/System.keychain >/dev/null 2>&1; do n=$((n+1)); done; if [ $n -gt 0 ]; then echo 'OP 7 OK'; else echo "OP 7 FAIL 1"; fi)"},
        {operation::DeleteKeychainItem{"s", false},
         R"(n=0; while /usr/bin/security delete-generic-password -s 's' >/dev/null 2>&1; do n=$((n+1)); done; while /usr/bin/security delete-internet-password -s 's' >/dev/null 2>&1; do n=$((n+1)); done; if [ $n -gt 0 ]; then echo 'OP 7 OK'; else echo "OP 7 FAIL 1"; fi)"},
        {operation::UnregisterApp{Path("/Applications/A.app")}, R"(echo 'OP 7 OK')"},
        {operation::FlushPreferences{},
         R"(/usr/bin/killall -u root cfprefsd >/dev/null 2>&1; c=$?; if [ $c -eq 0 ] || [ $c -eq 1 ]; then echo 'OP 7 OK'; else echo "OP 7 FAIL $c"; fi)"},
    };
    std::vector<RemovalOperation> operations;
    std::string script = "#!/bin/sh";
    for (const auto& [kind, line] : cases) {
        operations.push_back(step(7, kind));
        EXPECT_EQ(adminBatch::line(operations.back(), 501), line);
        script += std::string("\n") + line;
    }
    EXPECT_EQ(adminBatch::script(operations, 501), script);
}

TEST(AdminBatch, AnswersAreReadLineByLine) {
    const std::vector<RemovalOperation> operations = {step(7, operation::FlushPreferences{}),
                                                      step(8, operation::FlushPreferences{})};
    const auto ok = OperationResult::success(7);
    const auto failed = [](Message reason) { return OperationResult::failure(7, std::move(reason)); };
    const auto silent = failed({"failure.noResult"});
    const std::pair<const char*, OperationResult> cases[] = {
        {"OP 7 OK\n", ok},
        {"noise\rOP 7 OK\rmore", ok}, // as osascript converts line feeds
        {"OP 7 OK and more words", ok},
        {"OP 7 FAIL", failed({"failure.unknown"})},
        {"OP 7 FAIL occupied", failed({"failure.destinationOccupied"})},
        {"OP 7 FAIL 64", failed({"failure.exit %@", {"64"}})},
        {"OP 7 OK\nOP 7 FAIL 2\n", failed({"failure.exit %@", {"2"}})},
        {"OP 7 FAIL 2\nOP 7 MAYBE\n", failed({"failure.exit %@", {"2"}})},
        {"", silent},
        {"OP x OK\nOK 7\nOP 7\nop 7 OK\n OP 7 OK\nOP 7x OK\nOP 99999999999 OK\nOP 9 OK", silent},
    };
    for (const auto& [output, expected] : cases) {
        const auto results = adminBatch::parse(output, operations);
        ASSERT_EQ(results.size(), 2u) << output;
        EXPECT_EQ(results[0], expected) << output;
        EXPECT_EQ(results[1], OperationResult::failure(8, {"failure.noResult"})) << output;
    }
}

} // namespace
} // namespace tidwen

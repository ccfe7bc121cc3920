#include "base/message.h"
#include "platform/process_runner.h"
#include "posix/posix_process_runner.h"
#include "support/temporary_folder.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using namespace std::chrono_literals;

/// Runs shell commands and checks at the end that no process and no open file is left.
class PosixProcessRunnerTest : public testing::Test {
  protected:
    ~PosixProcessRunnerTest() override {
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was not waited for";
        EXPECT_EQ(openFiles(), openBefore_);
    }

    tl::expected<ProcessResult, ProcessRunnerError> shell(const std::string& commands,
                                                          std::chrono::milliseconds timeout = 30s) {
        return PosixProcessRunner(limits).run("/bin/sh", {"-c", commands}, timeout);
    }

    PosixProcessRunner::Limits limits{
        .outputBytes = 1 << 20, .terminationGrace = 100ms, .lingeringOutput = 100ms};

  private:
    static std::ptrdiff_t openFiles() {
        const std::filesystem::directory_iterator files("/dev/fd");
        return std::distance(begin(files), end(files));
    }
    std::ptrdiff_t openBefore_ = openFiles();
};

TEST_F(PosixProcessRunnerTest, GivesStatusAndBothStreams) {
    const std::pair<const char*, ProcessResult> cases[] = {
        {"echo out; echo err >&2; exit 3", {3, "out\n", "err\n"}},
        {"cat", {0, "", ""}}, // its input is empty, not this program's
        {"kill -9 $$", {137, "", ""}},
        {"exec >&- 2>&-; exit 4", {4, "", ""}}, // closes its streams before it ends
        {"printf 'caf\\303\\251'; printf '\\377' >&2", {0, "caf\xC3\xA9", ""}},
        {"echo $PATH; echo ${LANG-none} ${LC_ALL-none} ${TIDWEN_SECRET-none}",
         {0, "/usr/bin:/bin:/usr/sbin:/sbin\nnone none none\n", ""}},
    };
    setenv("LANG", "de_DE.UTF-8", 1);
    setenv("TIDWEN_SECRET", "told", 1);
    for (const auto& [commands, expected] : cases) {
        const auto result = shell(commands);
        ASSERT_TRUE(result) << commands;
        EXPECT_EQ(*result, expected) << commands;
    }
    const auto words = PosixProcessRunner().run("/bin/echo", {"a b", "$HOME", "'"}, 30s);
    EXPECT_EQ(words->standardOutput, "a b $HOME '\n");
}

TEST_F(PosixProcessRunnerTest, AToolThatCannotStartIsALaunchFailure) {
    const test::TemporaryFolder folder;
    std::ofstream(folder.path() / "plain") << "text";
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"/nonexistent/tool", {}},
        {folder.path(), {}},
        {folder.path() / "plain", {}},
        {"/bin/echo", {std::string("cut\0short", 9)}}};
    for (const auto& [executable, arguments] : cases) {
        const auto result = PosixProcessRunner().run(executable, arguments, 30s);
        ASSERT_FALSE(result) << executable;
        const auto message = describe(result.error());
        EXPECT_EQ(message.key, "failure.launchFailed %@");
        EXPECT_NE(message.arguments.at(0), MessageArgument(""));
    }
}

TEST_F(PosixProcessRunnerTest, AFloodOnBothStreamsNeitherBlocksNorFillsTheMemory) {
    const auto flooded = shell("head -c 100000000 /dev/zero >&2 & head -c 100000000 /dev/zero; wait; exit 5");
    ASSERT_TRUE(flooded);
    EXPECT_EQ(flooded->exitCode, 5);
    EXPECT_EQ(flooded->standardOutput, std::string(1 << 20, '\0'));
    EXPECT_EQ(flooded->standardError.size(), 1u << 20);

    limits.outputBytes = 10; // inside the fourth character
    EXPECT_EQ(shell("printf '\\342\\202\\254\\342\\202\\254\\342\\202\\254\\342\\202\\254'")->standardOutput,
              "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC");
}

/// The state of a process that may already be gone; "Z" when only its status is left.
std::string stateOf(pid_t process) {
#ifdef __linux__
    std::ifstream status("/proc/" + std::to_string(process) + "/stat");
    for (std::string word; status >> word;)
        if (word.ends_with(')')) return status >> word ? word : "gone";
    return "gone";
#else
    const auto asked =
        PosixProcessRunner().run("/bin/ps", {"-o", "state=", "-p", std::to_string(process)}, 20s);
    if (!asked) return "unknown";
    return asked->standardOutput.empty() ? "gone" : asked->standardOutput.substr(0, 1);
#endif
}

/// A killed process ends only when it is scheduled again.
bool ends(pid_t process) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (std::chrono::steady_clock::now() < deadline) {
        if (const auto state = stateOf(process); state == "gone" || state == "Z") return true;
        std::this_thread::yield();
    }
    return false;
}

TEST_F(PosixProcessRunnerTest, AToolThatHangsIsEndedWithItsChildren) {
    for (const char* hanging : {"wait", "trap '' TERM; while :; do sleep 0.01; done", "yes"}) {
        pid_t child = 0;
        // If a busy machine did not even start the child, try again with more time.
        for (auto timeout = 200ms; child == 0 && timeout < 20s; timeout *= 4) {
            const test::TemporaryFolder folder;
            const auto note = (folder.path() / "child").string();
            const auto result =
                shell("sh -c 'trap \"\" TERM; echo $$ >" + note + "; exec sleep 1000' & " + hanging, timeout);
            ASSERT_FALSE(result) << hanging;
            EXPECT_EQ(describe(result.error()), Message{"failure.timedOut"});
            std::ifstream(note) >> child;
        }
        EXPECT_NE(child, 0) << hanging;
        EXPECT_TRUE(ends(child)) << hanging;
    }
}

TEST_F(PosixProcessRunnerTest, AGrandchildThatHoldsAPipeIsNotWaitedFor) {
    const auto result = shell("sleep 1000 & echo $!");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->exitCode, 0);
    EXPECT_EQ(kill(std::stoi(result->standardOutput), SIGKILL), 0) << "a detached process is not terminated";
}

} // namespace
} // namespace tidwen

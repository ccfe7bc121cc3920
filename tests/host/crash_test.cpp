#include "host/crash_recorder.h"
#include "host/crash_reports.h"
#include "support/fixtures.h"
#include "support/trees.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tidwen {
namespace {

namespace fs = std::filesystem;
using namespace testing;

/// Uses 16 KiB of stack per call; the sum keeps the compiler from turning it into a loop.
int descend(int depth) {
    volatile char room[16u << 10];
    room[depth % sizeof room] = 1;
    return depth < 0 ? 0 : descend(depth + 1) + room[0];
}

/// The beginning of the address space is never mapped.
void readNothing() {
    const volatile std::uintptr_t nowhere = 64;
    (void)*reinterpret_cast<const volatile char*>(nowhere); // NOLINT(performance-no-int-to-ptr): meant
}

/// Crashes a child process without exception handlers; returns how it ended.
int crash(const fs::path& folder, void (*fault)()) noexcept {
    const auto child = ::fork();
    if (child == 0) {
        crashRecorder::install(folder, "1.2.3");
        crashRecorder::note("scan");
        fault();
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

auto count(const fs::path& folder) {
    return std::distance(fs::directory_iterator(folder), {});
}

class Crash : public Test {
  protected:
    test::TemporaryFolder base;
    const fs::path folder = base.path() / "state/deep/tidwen";
    test::RecordingLog log;
    CrashReports reports{folder, "What this is.", log};
};

TEST_F(Crash, IsWrittenDownAndToldOfOnceAtTheNextStart) {
    const struct {
        void (*fault)();
        int signal;
        const char* said;
    } cases[] = {
        {readNothing, SIGSEGV, "Cause: SIGSEGV"},
        {[] { std::abort(); }, SIGABRT, "Cause: SIGABRT"},
        {[] { descend(1); }, SIGSEGV, "Cause: SIGSEGV"},
        {[] { throw std::runtime_error("no\nway"); }, SIGABRT, "Exception: no way\n"},
        {[] { throw 7; }, SIGABRT, "Exception: of an unknown kind"},
    };
    ::umask(0);
    for (const auto& c : cases) {
        EXPECT_EQ(crash(folder, c.fault), c.signal);
        const auto report = reports.collect();
        ASSERT_TRUE(report);
        EXPECT_EQ(fs::status(*report).permissions(), fs::perms::owner_read | fs::perms::owner_write);
        EXPECT_THAT(test::contentOf(*report),
                    AllOf(HasSubstr("What this is.\n"), HasSubstr("Version: 1.2.3\n"),
                          HasSubstr("Command: scan\n"), HasSubstr(c.said), HasSubstr("host_test")));
        EXPECT_FALSE(reports.collect()) << "each crash is reported once";
        fs::remove_all(folder);
    }
}

TEST_F(Crash, KeepsTheLastTenReports) {
    fs::create_directories(folder);
    std::ofstream(folder / "mine.txt") << "left alone";
    for (int i = 10; i < 35; ++i) {
        std::ofstream(folder / ("crash-17637000" + std::to_string(i) + "-7.record")) << "signal 11";
        if (i == 20 || i == 34) {
            EXPECT_TRUE(reports.collect());
        }
    }
    EXPECT_EQ(count(folder), 11);
    EXPECT_TRUE(fs::exists(folder / "crash-2025-11-21T04-40-25Z-7.txt"));
    EXPECT_TRUE(fs::exists(folder / "crash-2025-11-21T04-40-34Z-7.txt"));
}

TEST_F(Crash, FollowsNoLinks) {
    fs::create_directories(folder);
    std::ofstream(base.path() / "secret") << "version secret";
    fs::create_symlink(base.path() / "secret", folder / "crash-1763700001-1.record");
    std::ofstream(folder / "crash-1763700002-2.record") << std::string(100'000, 'x');
    EXPECT_FALSE(reports.collect());
    EXPECT_EQ(count(folder), 0) << "anything but a record is dropped";
    EXPECT_TRUE(fs::exists(base.path() / "secret"));

    // A link in place of the folder, for the recorder and for the reader.
    const auto elsewhere = base.path() / "elsewhere";
    fs::create_directories(elsewhere);
    fs::remove(folder);
    fs::create_directory_symlink(elsewhere, folder);
    crash(folder, readNothing);
    std::ofstream(elsewhere / "crash-1763700001-1.record") << "signal 11";
    EXPECT_FALSE(reports.collect());
    EXPECT_EQ(count(elsewhere), 1);
}

TEST(CrashReport, HidesFoldersAndControlCharactersWhateverTheRecordHolds) {
    const auto report = crashReport("version 1\x1b[2J\nsignal x\ntime 99999999999999999999\nexception in "
                                    "/home/alice/secret\nframes\n/home/alice/bin/tidwen(+0x12)[0x55]\nodd",
                                    "Hello.", "/home/alice");
    EXPECT_THAT(report, AllOf(HasSubstr("in ~/secret\n"), HasSubstr("  tidwen(+0x12)[0x55]\n  odd\n"),
                              Not(HasSubstr("\x1b")), Not(HasSubstr("alice"))));
}

} // namespace
} // namespace tidwen

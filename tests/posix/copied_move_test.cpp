#include "base/descriptor.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "posix/copied_bytes.h"
#include "posix/moved_items.h"
#include "posix/tree_copy.h"
#include "support/small_disk.h"
#include "support/temporary_folder.h"
#include "support/trees.h"
#include "support/unprivileged.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>
#ifdef __linux__
#include <csignal>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#endif

namespace tidwen::test {
namespace {

/// A folder here and one on another disk; both are removed after the test.
class CopiedMove : public testing::Test {
  protected:
    void SetUp() override {
        struct stat mine {
        }, its{};
        std::string pattern = "/dev/shm/tidwen-test-XXXXXX";
        if (!::mkdtemp(pattern.data())) GTEST_SKIP() << "no second disk at /dev/shm";
        away = pattern;
        ::stat(here.path().c_str(), &mine);
        ::stat(away.c_str(), &its);
        if (mine.st_dev == its.st_dev) GTEST_SKIP() << "/dev/shm is not a second disk";
        hasAttributes = tag(away) && tag(here.path());
    }
    void TearDown() override {
        std::error_code ignored;
        if (!away.empty()) fs::remove_all(away, ignored);
    }

    Path hereAt(const std::string& name) const { return Path((here.path() / name).string()); }
    Path awayAt(const std::string& name) const { return Path((away / name).string()); }

    TemporaryFolder here;
    fs::path away;
    bool hasAttributes = false; ///< on both disks
};

TEST_F(CopiedMove, KeepsEverythingBothWays) {
    const auto app = here.path() / "Marlin Notes.app";
    const auto big = app / "sparse";
    writeFile(app / "Contents/Info.plist", "<plist/>");
    writeFile(app / "Contents/tool", std::string(700'000, 'x'));
    writeFile(app / std::string(255, 'n') / "\xff\xfe\n", "odd");
    fs::create_hard_link(app / "Contents/tool", app / "tool");
    fs::create_symlink("../../../etc/passwd", app / "link");
    fs::create_symlink("nowhere", app / "Contents/dangling");
    writeFile(big, "start");
    ASSERT_EQ(::truncate(big.c_str(), 4 << 20), 0);
    std::ofstream(big, std::ios::in | std::ios::binary).seekp(2 << 20) << "middle";
    ASSERT_EQ(::mkfifo((app / "pipe").c_str(), 0620), 0);
    if (hasAttributes) {
        EXPECT_TRUE(tag(app));
        EXPECT_TRUE(tag(app / "Contents/Info.plist"));
    }
    ::chmod((app / "Contents/tool").c_str(), 04755);
    if (::geteuid() == 0) ::lchown((app / "link").c_str(), 501, 20);
    if (::geteuid() == 0) ::lchown((app / "Contents/Info.plist").c_str(), 501, 20);
    age(app / "Contents/tool", 123'456'789);
    age(app / "link", 1);
    ::chmod((app / "Contents").c_str(), 0555);
    age(app / "Contents", 42);
    age(app, 43);
    const auto before = fingerprint(app);

    const auto files = openVolume();
    ASSERT_EQ(outcome(files->move(hereAt("Marlin Notes.app"), awayAt("moved"))), "ok");
    EXPECT_EQ(fingerprint(away / "moved"), before);
    EXPECT_LT(files->info(awayAt("moved/sparse"))->allocatedBytes, 1u << 20);
    EXPECT_EQ(namesIn(away), std::vector<std::string>{"moved"});
    EXPECT_TRUE(fs::is_empty(here.path()));
    ASSERT_EQ(outcome(files->move(awayAt("moved"), hereAt("Marlin Notes.app"))), "ok");
    EXPECT_EQ(fingerprint(app), before);
    EXPECT_TRUE(fs::is_empty(away));
}

TEST_F(CopiedMove, MovesSingleItemsAndReplacesNone) {
    const std::string longName(255, 'l');
    writeFile(here.path() / longName, "long");
    fs::create_symlink("nowhere", here.path() / "link");
    writeFile(away / "taken", "other");
    const auto files = openVolume();
    EXPECT_EQ(outcome(files->move(hereAt("link"), awayAt("taken"))), "exists");
    EXPECT_EQ(outcome(files->move(hereAt("link"), awayAt("none/link"))), "missing");
    EXPECT_EQ(outcome(files->move(hereAt("link"), awayAt("link"))), "ok");
    EXPECT_EQ(outcome(files->move(hereAt(longName), awayAt("link"))), "exists");
    EXPECT_EQ(outcome(files->move(hereAt(longName), awayAt(longName))), "ok");
    EXPECT_EQ(contentOf(away / longName), "long");
    EXPECT_EQ(namesIn(away), (std::vector<std::string>{"link", longName, "taken"}));
    EXPECT_TRUE(fs::is_empty(here.path()));
}

TEST_F(CopiedMove, WhatCannotBeMovedWholeStaysWhole) {
    writeFile(here.path() / "mine/sealed/file", "x");
    writeFile(here.path() / "unreadable/file", "x");
    giveToUnprivileged(here.path());
    giveToUnprivileged(away);
    ::chmod((here.path() / "unreadable/file").c_str(), 0);
    ::chmod((here.path() / "mine/sealed").c_str(), 0500);
    std::vector<std::string> immovable{"unreadable"};
    if (::geteuid() == 0) { // only root can give an item away
        writeFile(here.path() / "foreign/file", "x");
        immovable.insert(immovable.begin(), "foreign");
        ASSERT_EQ(::chown((here.path() / "foreign").c_str(), 501, 20), 0);
    }
    const auto before = fingerprint(here.path());
    asUnprivileged([&] {
        for (const auto& name : immovable)
            EXPECT_EQ(outcome(openVolume()->move(hereAt(name), awayAt(name))), "denied") << name;
    });
    EXPECT_EQ(fingerprint(here.path()), before);
    EXPECT_TRUE(fs::is_empty(away));
    asUnprivileged([&] { EXPECT_EQ(outcome(openVolume()->move(hereAt("mine"), awayAt("mine"))), "ok"); });
    EXPECT_EQ(namesIn(here.path()), immovable);
}

TEST_F(CopiedMove, AFullDiskLeavesTheOriginalAndNoCopy) {
    writeFile(here.path() / "app/small", "x");
    writeFile(here.path() / "app/zzz", std::string(1 << 20, 'x'));
    const auto before = fingerprint(here.path());
    const auto skipped = withSmallDisk(256u << 10, [&](const fs::path& disk) {
        const auto files = openVolume();
        EXPECT_EQ(outcome(files->move(hereAt("app"), Path((disk / "app").string()))), "noSpace");
        EXPECT_TRUE(fs::is_empty(disk));
        ASSERT_TRUE(makeReadOnly(disk));
        EXPECT_EQ(outcome(files->move(hereAt("app"), Path((disk / "app").string()))), "denied");
    });
    EXPECT_EQ(fingerprint(here.path()), before);
    if (skipped) GTEST_SKIP() << *skipped;
}

/// The destination is on another mount and yet inside the item.
TEST_F(CopiedMove, NothingIsCopiedIntoItself) {
    const auto skipped = withSmallDisk(1u << 20, [](const fs::path& disk) {
        writeFile(disk / "app/file", "x");
        fs::create_directories(disk / "app/inside/run");
        fs::create_directory(disk / "trash");
        ASSERT_TRUE(mountAgain(disk / "app/inside", disk / "trash"));
        const auto at = [&](const char* name) { return Path((disk / name).string()); };
        EXPECT_EQ(outcome(openVolume()->move(at("app"), at("trash/run/app"))), "otherDisk");
        EXPECT_TRUE(fs::is_empty(disk / "trash/run"));
        EXPECT_EQ(outcome(openVolume()->move(at("app/file"), at("trash/run/file"))), "ok");
    });
    if (skipped) GTEST_SKIP() << *skipped;
}

TEST_F(CopiedMove, HolesOfTerabytesCostNothing) {
    constexpr off_t size = off_t{4} << 40;
    const auto file = here.path() / "sparse";
    writeFile(file, "start");
    if (::truncate(file.c_str(), size) != 0) GTEST_SKIP() << "this disk does not support such large files";
    std::ofstream(file, std::ios::in | std::ios::binary).seekp(size - 3) << "end";
    const auto files = openVolume();
    ASSERT_EQ(outcome(files->move(hereAt("sparse"), awayAt("sparse"))), "ok");
    ASSERT_EQ(outcome(files->move(awayAt("sparse"), hereAt("back"))), "ok");
    EXPECT_EQ(files->readRange(hereAt("back"), 0, 6).value(), std::string("start\0", 6));
    EXPECT_EQ(files->readRange(hereAt("back"), size - 4, 9).value(), std::string("\0end", 4));
    EXPECT_LT(files->info(hereAt("back"))->allocatedBytes, 1u << 20);
}

#ifdef __linux__

/// Some file systems report recently written data as a hole; here, all of every file.
TEST_F(CopiedMove, CopiesWhatTheDiskWronglyCallsAHole) {
    writeFile(here.path() / "app/file", std::string(700'000, 'x'));
    const auto before = fingerprint(here.path() / "app");
    inChild([&] {
        ASSERT_TRUE(refuseSystemCall(SYS_lseek, ENXIO, SEEK_DATA));
        EXPECT_EQ(outcome(openVolume()->move(hereAt("app"), awayAt("app"))), "ok");
    });
    EXPECT_EQ(fingerprint(away / "app"), before);
}

/// Whether the system call at which a traced process stopped changes a disk.
bool wouldChangeADisk(const __ptrace_syscall_info& stop) {
    constexpr long changing[] = {SYS_mkdirat, SYS_renameat2, SYS_unlinkat,  SYS_linkat, SYS_symlinkat,
                                 SYS_mknodat, SYS_pwrite64,  SYS_ftruncate, SYS_fchown, SYS_fchownat,
                                 SYS_fchmod,  SYS_fsetxattr, SYS_utimensat, SYS_syncfs};
    if (stop.op != PTRACE_SYSCALL_INFO_ENTRY) return false;
    const long call = static_cast<long>(stop.entry.nr);
    return (call == SYS_openat && (stop.entry.args[2] & O_CREAT) != 0)
           || std::find(std::begin(changing), std::end(changing), call) != std::end(changing);
}

enum class Ended { reached, before, notTraced };

/// Runs the body in a child and calls `interrupt` just before its `count`-th call that changes a disk.
Ended runAndInterruptAt(int count, const std::function<void()>& body,
                        const std::function<void(pid_t child)>& interrupt) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(2);
        ::raise(SIGSTOP);
        body();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) return Ended::notTraced;
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    while (::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 && ::waitpid(child, &status, 0) == child) {
        if (!WIFSTOPPED(status)) break;
        __ptrace_syscall_info stop{};
        ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof stop, &stop);
        if (wouldChangeADisk(stop) && --count == 0) interrupt(child);
    }
    // Its locks go with it.
    while (::waitpid(child, &status, 0) == child && WIFSTOPPED(status))
        ;
    return count <= 0 ? Ended::reached : Ended::before;
}

/// Moves a small application to the other disk, interrupted before each change in turn, each time in new
/// folders, and checks the outcome. Returns the number of changes; 0 where nothing can be traced.
int forEveryChange(const fs::path& here, const fs::path& away,
                   const std::function<void(pid_t child)>& interrupt,
                   const std::function<void(const std::vector<std::string>& before)>& look) {
    const auto files = openVolume();
    for (int count = 1; count < 500; ++count) {
        writeFile(here / "app/inner/file", std::string(300'000, 'x'));
        fs::create_symlink("inner/file", here / "app/link");
        fs::create_hard_link(here / "app/inner/file", here / "app/same");
        tag(here / "app/inner");
        const auto before = fingerprint(here / "app");
        const Path from((here / "app").string()), to((away / "app").string());
        const auto ended = runAndInterruptAt(
            count, [&] { (void)files->move(from, to); }, interrupt);
        if (ended == Ended::notTraced) return 0;
        if (ended == Ended::before) return count - 1;
        SCOPED_TRACE(count);
        look(before);
        for (const auto& folder : {here, away})
            for (const auto& entry : fs::directory_iterator(folder))
                fs::remove_all(entry.path());
    }
    return 0;
}

TEST_F(CopiedMove, AKillAtAnyChangeIsSettled) {
    int completed = 0;
    const int changes = forEveryChange(
        here.path(), away, [](pid_t child) { ::kill(child, SIGKILL); },
        [&](const auto& before) {
            const auto aside = here.path() / ".tidwen-moved-app";
            if (fs::exists(aside)) {
                EXPECT_EQ(fingerprint(aside), before) << "what is aside is whole, until it has another name";
            }
            EXPECT_EQ(outcome(openVolume()->settleInterruptedMove(hereAt("app"), awayAt("app"))), "ok");
            const bool isMoved = fs::exists(away / "app");
            completed += isMoved ? 1 : 0;
            EXPECT_EQ(fingerprint(isMoved ? away / "app" : here.path() / "app"), before);
            EXPECT_EQ(namesIn(here.path()).size() + namesIn(away).size(), 1u);
        });
    if (changes == 0) GTEST_SKIP() << "this process may not trace its child";
    std::printf("killed at %d changes, %d moves were completed afterwards\n", changes, completed);
    EXPECT_GT(completed, 2);
}

/// A process keeps writing to the item while it is moved: its data survives in every case.
TEST_F(CopiedMove, LeavesTheCopyThatAnotherProcessIsMaking) {
    for (const std::string kind : {"folder", "file"}) {
        const fs::path item = here.path() / kind, copy = away / (".tidwen-copy-" + kind);
        writeFile(kind == "file" ? item : item / "file", "x");
        writeFile(kind == "file" ? copy : copy / "file", "x");
        {
            const Descriptor maker(::open(copy.c_str(), O_RDONLY | O_CLOEXEC));
            ASSERT_EQ(::flock(maker.get(), LOCK_EX), 0);
            (void)openVolume()->settleInterruptedMove(hereAt(kind), awayAt(kind));
            EXPECT_EQ(outcome(openVolume()->move(hereAt(kind), awayAt(kind))), "busy");
            EXPECT_TRUE(fs::exists(copy) && fs::exists(item));
        }
        EXPECT_EQ(outcome(openVolume()->move(hereAt(kind), awayAt(kind))), "ok") << "its maker is gone";
        EXPECT_FALSE(fs::exists(copy));
    }
}

/// That of another home, for its own move of the same item, finds what this move has aside.
TEST_F(CopiedMove, IsNotRecoveredByAnotherProcessMeanwhile) {
    const auto files = openVolume();
    int refusals = 0;
    const int changes = forEveryChange(
        here.path(), away,
        [&](pid_t) {
            const auto settled = files->settleInterruptedMove(hereAt("app"), awayAt("theirs"));
            refusals += outcome(settled) == "busy" ? 1 : 0;
            EXPECT_EQ(outcome(files->revealRemains(hereAt("app"))), outcome(settled));
        },
        [&](const auto& before) {
            ASSERT_EQ(namesIn(away), std::vector<std::string>{"app"});
            EXPECT_EQ(fingerprint(away / "app"), before);
            EXPECT_TRUE(fs::is_empty(here.path()));
        });
    if (changes == 0) GTEST_SKIP() << "this process may not trace its child";
    EXPECT_GT(refusals, 4);
}

TEST_F(CopiedMove, TellsThatAnotherPutItBackMeanwhile) {
    void* shared = ::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& isTold = *static_cast<bool*>(shared);
    const auto files = openVolume();
    int returned = 0;
    auto ended = Ended::reached;
    for (int count = 1; ended == Ended::reached; ++count) {
        writeFile(here.path() / "app/inner/file", "x");
        const auto move = [&] {
            const auto moved = files->move(hereAt("app"), awayAt("app"));
            isTold = !moved || *moved == MoveRemains{hereAt("app"), FileFault::busy};
        };
        const auto putBack = [&](pid_t) {
            std::error_code none;
            for (const auto* aside : {".tidwen-moved-app", ".tidwen-arrived-app"})
                fs::rename(here.path() / aside, here.path() / "app", none);
        };
        ended = runAndInterruptAt(count, move, putBack);
        if (ended == Ended::reached) {
            EXPECT_EQ(isTold, fs::exists(here.path() / "app")) << count;
        }
        returned += isTold ? 1 : 0;
        fs::remove_all(here.path() / "app");
        for (const auto& entry : fs::directory_iterator(away))
            fs::remove_all(entry.path());
    }
    ::munmap(shared, 1);
    if (ended == Ended::notTraced) GTEST_SKIP() << "this process may not trace its child";
    EXPECT_GT(returned, 2);
}

TEST_F(CopiedMove, WhatIsWrittenMeanwhileIsNotLost) {
    int kept = 0;
    const int changes = forEveryChange(
        here.path(), away,
        [&](pid_t) {
            for (const auto& top : {here.path() / "app", here.path() / ".tidwen-moved-app",
                                    here.path() / ".tidwen-arrived-app", away / "app"}) {
                if (!fs::exists(top / "inner/file")) continue;
                writeFile(top / "inner/new", "new words");
                std::ofstream(top / "inner/file", std::ios::app) << "more words";
                // An application that misses its folder creates it again.
                if (!fs::exists(here.path() / "app")) writeFile(here.path() / "app/anew", "anew");
                return;
            }
        },
        [&](const auto&) {
            std::string words;
            for (const auto& folder : {here.path(), away})
                for (const auto& entry : fs::recursive_directory_iterator(folder))
                    if (entry.is_regular_file() && !entry.is_symlink())
                        words += contentOf(entry.path()).substr(0, 9)
                                 + contentOf(entry.path())
                                       .substr(std::min<std::size_t>(300'000, fs::file_size(entry.path())));
            EXPECT_NE(words.find("new words"), words.npos);
            EXPECT_NE(words.find("more words"), words.npos);
            if (!fs::exists(here.path() / ".tidwen-moved-app")) return;
            const auto settled = openVolume()->settleInterruptedMove(hereAt("app"), awayAt("app"));
            EXPECT_EQ(settled.value(), (MoveRemains{hereAt(".tidwen-moved-app"), FileFault::busy}));
            EXPECT_EQ(outcome(openVolume()->move(hereAt("app"), awayAt("app, anew"))), "ok");
            EXPECT_EQ(openVolume()->revealRemains(hereAt("app")), std::vector{hereAt("app")});
            EXPECT_TRUE(fs::exists(here.path() / "app/inner/new"));
            kept += 1;
        });
    if (changes == 0) GTEST_SKIP() << "this process may not trace its child";
    EXPECT_GT(kept, 0);
}

/// What cannot be removed is returned, removed as soon as possible, and does not prevent the next move.
TEST_F(CopiedMove, WhatCannotBeRemovedIsToldAndRemovedLater) {
    const auto files = openVolume();
    const struct {
        std::string name, aside;
        long call;
    } cases[] = {{"one", ".tidwen-arrived-app", SYS_unlinkat}, {"two", ".tidwen-moved-app", SYS_fsync}};
    for (const auto& each : cases) {
        writeFile(here.path() / "app/inner/file", each.name);
        inChild([&] {
            ASSERT_TRUE(refuseSystemCall(each.call, EIO));
            EXPECT_EQ(files->move(hereAt("app"), awayAt(each.name)).value(),
                      (MoveRemains{hereAt(each.aside), FileFault::io}));
        });
        EXPECT_EQ(contentOf(away / each.name / "inner/file"), each.name);
        EXPECT_EQ(contentOf(here.path() / each.aside / "inner/file"), each.name);
    }
    EXPECT_TRUE(files->isSetAside(hereAt("app")));
    for (const auto* name : {"one", "two"})
        EXPECT_EQ(outcome(files->settleInterruptedMove(hereAt("app"), awayAt(name))), "ok");
    EXPECT_TRUE(fs::is_empty(here.path()));
    EXPECT_EQ(namesIn(away), (std::vector<std::string>{"one", "two"}));
}

#else

TEST_F(CopiedMove, EndsOrChangesAtAnyCall) {
    GTEST_SKIP() << "only Linux lets a process stop and refuse the calls of its child";
}

#endif

TEST(CopiedBytes, AreToldToTheirThreadWhileTheyAreCopied) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "from") << std::string(3u << 20, 'x');
    std::vector<std::uint64_t> told;
    {
        const CopiedBytes observed([&](std::uint64_t bytes) { told.push_back(bytes); });
        const Descriptor parent(::open(folder.path().c_str(), O_RDONLY | O_CLOEXEC));
        Descriptor claim;
        EXPECT_EQ(copyTree(parent.get(), "from", parent.get(), "to", claim), 0);
        std::thread([] { CopiedBytes::add(1u << 30); }).join();
    }
    CopiedBytes::add(1u << 30);
    EXPECT_EQ(told, (std::vector<std::uint64_t>{1u << 20, 2u << 20, 3u << 20}));
}

} // namespace
} // namespace tidwen::test

// The program is killed at every call that changes the disk, one run per call; whatever it was doing, the
// volume can be brought back to exactly what it was.

#include "road/kill/volume_memory.h"
#include "support/fixtures.h"
#include "support/small_disk.h"

#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tidwen::test {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

const Words applications = {"/Applications/Marlin Notes.app", "/Applications/Zoë's \"Draw\".app"};

/// Two applications with items of the user and of the system, of every kind and with awkward names.
void fill(const TemporaryVolume& volume, bool withAttributes) {
    writeBundle(volume, applications[0], "com.example.marlin", "Marlin Notes");
    writeBundle(volume, applications[1], "com.example.draw", "Zoë's \"Draw\"");
    volume.link(applications[0] + "/Contents/Current", "MacOS/Marlin Notes");
    const std::string library = "/Users/alice/Library/";
    const Words files = {
        "/Library/Caches/com.example.marlin/index",
        "/Library/LaunchDaemons/com.example.draw.daemon.plist",
        library + "Application Support/com.example.draw/Fußnoten/Re\u0301sume\u0301.txt",
        library + "Application Support/Marlin Notes/it's \"quoted\" \\ $HOME/*?",
        library + "Caches/com.example.marlin/line\nbreak/-rf",
        library + "Caches/com.example.draw.it's \"é\"\n",
        library + "Preferences/com.example.marlin.plist",
        library + "Logs/keep me.log",
    };
    for (const auto& file : files)
        volume.write(file, "content of " + file);
    volume.write("/Library/LaunchDaemons/com.example.draw.daemon.plist",
                 writeXmlPropertyList(PropertyListDictionary{
                     {"Label", "com.example.draw.daemon"},
                     {"Program", applications[1] + "/Contents/MacOS/Zoë's \"Draw\""}}));
    volume.write(files[4], std::string(300'000, 'x'));
    volume.link(library + "Application Support/Marlin Notes/nowhere", "/does/not/exist");
    volume.makeFolder(library + "Application Support/Marlin Notes/empty");
    volume.makeFolder("/Users/alice/.Trash");
    fs::permissions(volume.host(applications[0] + "/Contents/MacOS/Marlin Notes"), fs::perms(0755));
    fs::permissions(volume.host(files[6]), fs::perms(0600));
    fs::permissions(volume.host(library + "Application Support/Marlin Notes"), fs::perms(0750));
    if (!withAttributes) return;
    for (const auto& path : {applications[0], files[6]})
        tag(volume.host(path));
}

/// How one run of the program ended.
struct Ended {
    bool killed = false;
    int exitCode = -1;
    std::string output;
};

/// A volume of its own for one run, its Trash on `otherDisk` when that is a folder.
class Disk {
  public:
    explicit Disk(const fs::path& otherDisk) {
        volume_.makeFolder("/Users/alice/.Trash");
        if (!otherDisk.empty()) mountTrash(otherDisk);
        fill(volume_, tag(trash())); // a move to a disk that cannot keep them would be refused
        memory_.emplace(volume_.hostRoot());
    }
    ~Disk() { umount2(trash().c_str(), MNT_DETACH); } // refused where nothing is mounted
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    /// Runs the program on this volume and kills it at its `killAt`th change; 0 lets it end.
    Ended tidwen(int killAt, Words arguments) const {
        const auto output = scratch_.path() / "output";
        arguments.insert(arguments.begin(), {TIDWEN_PROGRAM, "--volume", volume_.hostRoot().string()});
        Words environment = {std::string("LD_PRELOAD=") + TIDWEN_KILL_MODULE,
                             "TIDWEN_KILL_BELOW=" + volume_.hostRoot().string(),
                             "TIDWEN_KILL_AT=" + std::to_string(killAt),
                             "ASAN_OPTIONS=verify_asan_link_order=0", "HOME=" + scratch_.path().string()};
        const auto words = pointersTo(arguments), variables = pointersTo(environment);
        const pid_t child = fork();
        if (child == 0) {
            const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            dup2(file, STDOUT_FILENO);
            dup2(file, STDERR_FILENO);
            execve(words[0], words.data(), variables.data());
            _exit(127);
        }
        int status = 0;
        waitpid(child, &status, 0);
        std::ifstream in(output);
        return {WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL,
                WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                std::string(std::istreambuf_iterator<char>(in), {})};
    }

    Ended remove(int killAt = 0) const {
        return tidwen(
            killAt, {"remove", applications[0], applications[1], "--risk", "safe,review,sensitive", "--yes"});
    }
    Ended recover(int killAt = 0) const { return tidwen(killAt, {"recover", "--yes"}); }
    Ended undo(int killAt = 0) const { return tidwen(killAt, {"undo", "1", "--yes"}); }

    Words changes() const { return memory_->changes(); }

    /// Names of what is no folder and not in quarantine.
    Words itemsLeft() const {
        Words left;
        for (const auto& each : fs::recursive_directory_iterator(volume_.hostRoot()))
            if (!each.is_directory() && each.path().string().find("/.Trash/") == std::string::npos)
                left.push_back(each.path().filename());
        return left;
    }

  private:
    /// As a C function takes them.
    static std::vector<char*> pointersTo(Words& words) {
        std::vector<char*> pointers;
        pointers.reserve(words.size() + 1);
        for (auto& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        return pointers;
    }

    fs::path trash() const { return volume_.host("/Users/alice/.Trash"); }

    void mountTrash(const fs::path& disk) const {
        for (const auto& left : fs::directory_iterator(disk))
            fs::remove_all(left);
        if (mount(disk.c_str(), trash().c_str(), nullptr, MS_BIND, nullptr) != 0)
            throw std::runtime_error("cannot mount the other disk");
    }

    TemporaryVolume volume_;
    TemporaryFolder scratch_;
    std::optional<VolumeMemory> memory_;
};

class Kill : public testing::TestWithParam<bool> {
  protected:
    /// Calls `runAt` with a fresh volume for point 1, 2, … until it says that the run came to its end.
    void sweep(const char* what, const std::function<bool(const Disk&, int point)>& runAt) {
        const auto all = [&](const fs::path& otherDisk) {
            int point = 1;
            for (bool ended = false; !ended && !HasFatalFailure(); ++point) {
                SCOPED_TRACE(point);
                ended = runAt(Disk(otherDisk), point);
            }
            std::cout << "[   KILLS  ] " << what << (GetParam() ? ", Trash on another disk: " : ": ")
                      << point - 2 << " points" << std::endl;
        };
        if (!GetParam()) return all({});
        if (const auto reason = withSmallDisk(16u << 20, all)) GTEST_SKIP() << *reason;
    }
};

TEST_P(Kill, ARemovalCutOffAnywhereIsPutBack) {
    sweep("removal", [](const Disk& disk, int point) {
        const auto ended = disk.remove(point);
        if (!ended.killed) {
            EXPECT_EQ(ended.exitCode, 0) << ended.output;
            EXPECT_EQ(disk.itemsLeft(), Words{"keep me.log"});
            return true;
        }
        const auto recovered = disk.recover();
        EXPECT_EQ(recovered.exitCode, 0) << recovered.output;
        const auto undone = disk.undo(); // refused when nothing had moved yet
        EXPECT_NE(undone.exitCode, 1) << undone.output;
        EXPECT_EQ(disk.changes(), Words());
        return HasFailure();
    });
}

TEST_P(Kill, ARecoveryCutOffAnywhereIsMadeAgain) {
    sweep("recovery", [](const Disk& disk, int point) {
        EXPECT_TRUE(disk.remove(GetParam() ? 60 : 20).killed);
        const auto ended = disk.recover(point);
        EXPECT_EQ(disk.recover().exitCode, 0);
        EXPECT_EQ(disk.undo().exitCode, 0);
        EXPECT_EQ(disk.changes(), Words());
        return !ended.killed || HasFailure();
    });
}

TEST_P(Kill, AnUndoCutOffAnywhereIsFinishedByTheNext) {
    sweep("undo", [](const Disk& disk, int point) {
        EXPECT_EQ(disk.remove().exitCode, 0);
        const auto ended = disk.undo(point);
        if (ended.killed) disk.undo(); // says which items were back already
        EXPECT_EQ(disk.changes(), Words()) << ended.output;
        return !ended.killed || HasFailure();
    });
}

INSTANTIATE_TEST_SUITE_P(Disks, Kill, testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "TrashOnAnotherDisk" : "OneDisk");
});

} // namespace
} // namespace tidwen::test

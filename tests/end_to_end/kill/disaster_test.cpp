// Other failures during a removal: full and read-only disks, items and folders that change meanwhile. Nothing
// is lost, and no other item is moved.

#include "base/path.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "end_to_end/kill/volume_memory.h"
#include "operations/recording_runner.h"
#include "operations/removal_operation.h"
#include "platform/file_system.h"
#include "posix/rooted_file_system.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/recovery.h"
#include "quarantine/undo_service.h"
#include "removal/removal_executor.h"
#include "removal/removal_report.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/small_disk.h"
#include "support/unprivileged.h"
#include "volume/volume_runner.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen::test {
namespace {

namespace fs = std::filesystem;

const std::string caches = "/Users/alice/Library/Caches/";
const std::string trash = "/Users/alice/.Trash";

/// A removal of two items on a volume, step by step.
class Disaster {
  public:
    explicit Disaster(const fs::path& host)
        : host_(host),
          files_(std::move(RootedFileSystem::open(host).value())),
          runner_(*files_, alice(), log_) {
        for (const auto* item : {"Library/Caches/first/a", "Library/Caches/second/b"})
            writeFile(at("/Users/alice/") / item, item);
        fs::create_directories(at(trash));
        // Runs `between` after each step.
        watched_.answer = [this](const RemovalOperation& each) {
            auto reason = runner_.run({each}).front().failureReason;
            if (between) between();
            return reason;
        };
        memory_.emplace(host_);
    }

    fs::path at(const std::string& macPath) const { return host_ / macPath.substr(1); }

    FileResult<RemovalReport> remove() {
        const std::vector<AppRecord> apps = {{"Notes", "com.example.notes"}};
        const auto layout = createQuarantineFolder(apps, Timestamp{}, alice(), *files_);
        if (!layout) return tl::unexpected(layout.error());
        std::vector<RemovalOperation> plan;
        for (const auto* name : {"first/a", "second/b"})
            plan.push_back({.id = static_cast<int>(plan.size()) + 1,
                            .kind = operation::Move{Path(caches + name), layout->root / name},
                            .displayName = name,
                            .bundleID = "com.example.notes"});
        if (planned) planned();
        return RemovalExecutor({*files_, watched_, runner_, log_})
            .execute(plan, *layout, apps, RemovalMode::uninstall, Timestamp{});
    }

    /// Undoes everything with the user's commands and returns what differs.
    std::vector<std::string> changesAfterUndo() {
        recoverInterruptedRemovals(alice(), *files_, clock_, log_);
        for (const auto& run : loadHistory(alice(), *files_, false))
            EXPECT_THAT(
                UndoService({*files_, runner_, runner_, log_, clock_}, alice()).undo(run.manifest).failures,
                IsEmpty());
        return memory_->changes();
    }

    /// Fills the disk completely; `fs::remove(filler())` frees the space.
    void fillDisk() const {
        std::ofstream filler(this->filler(), std::ios::binary);
        while (filler.write(std::string(4096, '\0').data(), 4096) && filler.flush()) {
        }
    }
    fs::path filler() const { return at("/filler"); }

    std::function<void()> planned, between;

  private:
    fs::path host_;
    RecordingLog log_;
    std::unique_ptr<RootedFileSystem> files_;
    VolumeRunner runner_;
    RecordingRunner watched_;
    Texts texts_;
    SystemClock clock_;
    std::optional<VolumeMemory> memory_;
};

TEST(Disaster, AFullDiskLosesNothing) {
    for (const bool beforeTheJournal : {true, false}) {
        const auto skipped = withSmallDisk(512 << 10, [&](const fs::path& disk) {
            Disaster volume(disk);
            (beforeTheJournal ? volume.planned : volume.between) = [&] { volume.fillDisk(); };
            const auto report = volume.remove();
            EXPECT_EQ(outcome(report), beforeTheJournal ? "noSpace" : "ok");
            if (report) {
                EXPECT_FALSE(report->manifestFailure) << "its space was held";
            }
            EXPECT_EQ(fs::exists(volume.at(caches + "first/a")), beforeTheJournal);
            fs::remove(volume.filler());
            EXPECT_THAT(volume.changesAfterUndo(), IsEmpty());
            EXPECT_EQ(fs::is_empty(volume.at(trash)), beforeTheJournal);
        });
        if (skipped) GTEST_SKIP() << *skipped;
    }
}

TEST(Disaster, ATrashThatCannotBeWrittenMeansNoRemoval) {
    const TemporaryFolder folder;
    giveToUnprivileged(folder.path());
    asUnprivileged([&] {
        Disaster volume(folder.path());
        fs::permissions(volume.at(trash), fs::perms(0555));
        const VolumeMemory memory(folder.path());
        EXPECT_EQ(outcome(volume.remove()), "denied");
        EXPECT_THAT(memory.changes(), IsEmpty());
    });
}

TEST(Disaster, AHomeExchangedForALinkInTheMiddleLeadsNowhereElse) {
    const TemporaryFolder folder;
    Disaster volume(folder.path());
    writeFile(volume.at("/Users/bob/Library/Caches/second/b"), "of bob");
    fs::create_directories(volume.at("/Users/bob/.Trash"));
    const auto bobs = fingerprint(volume.at("/Users/bob"), FolderTimes::ignored);
    const auto home = volume.at("/Users/alice"), elsewhere = volume.at("/Users/gone");
    volume.between = [&] {
        if (fs::exists(elsewhere)) return;
        fs::rename(home, elsewhere);
        fs::create_directory_symlink("bob", home);
    };
    const auto report = volume.remove();
    EXPECT_EQ(fingerprint(volume.at("/Users/bob"), FolderTimes::ignored), bobs);
    ASSERT_TRUE(report);
    EXPECT_TRUE(report->manifestFailure) << "the words that the run's record could not be written";
    EXPECT_FALSE(report->results.back().succeeded);

    fs::remove(home);
    fs::rename(elsewhere, home);
    volume.changesAfterUndo();
    EXPECT_TRUE(fs::exists(volume.at(caches + "first/a")));
    EXPECT_TRUE(fs::exists(volume.at(caches + "second/b")));
}

} // namespace
} // namespace tidwen::test

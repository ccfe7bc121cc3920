#pragma once

#include "end_to_end/kill/volume_memory.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace tidwen::test {

// Runs the program on volumes of which one call goes wrong, or ends it: what the sweeps of faults are made
// of.

using Words = std::vector<std::string>;

/// What goes wrong in one run of the program (fault_at_call.cpp).
struct Fault {
    int at = 0;                ///< number of the call that changes the disk, from 1; 0: nothing goes wrong
    std::string kind = "kill"; ///< "interrupt", or the error, as a number
    bool lasts = false;        ///< every later call fails too, as on a disk that is gone
};

/// How one run of the program ended.
struct Ended {
    bool killed = false;
    int exitCode = -1; ///< -1 when a signal ended it
    std::string output;
    std::string hit; ///< name and place of the call that went wrong; empty when the run ended before it
};

/// The disks that a sweep runs on.
struct Disks {
    bool trashElsewhere = false; ///< the Trash lies on another disk
    bool exclusiveRename = true; ///< the file system can rename without replacing
};

/// A fresh volume of two applications with items of every kind, its Trash on `otherDisk` unless that is
/// empty.
class FaultyVolume {
  public:
    FaultyVolume(const std::filesystem::path& otherDisk, bool exclusiveRename);
    ~FaultyVolume();
    FaultyVolume(const FaultyVolume&) = delete;
    FaultyVolume& operator=(const FaultyVolume&) = delete;

    Ended remove(const Fault& fault = {}) const;
    Ended recover(const Fault& fault = {}) const { return tidwen({"recover", "--yes"}, fault); }
    Ended undo(const Fault& fault = {}) const { return tidwen({"undo", "1", "--yes"}, fault); }
    Ended purge(const Fault& fault = {}) const { return tidwen({"purge", "1", "--yes"}, fault); }

    /// What is not as it was before, the quarantine aside.
    Words changes() const { return memory_->changes(); }
    /// Mac paths of what is no folder and does not lie in the Trash.
    Words itemsLeft() const;
    /// Mac paths of items that a move between disks calls by a hidden name while it is at work.
    Words hiddenItems() const;
    /// What the removal takes and is still there, also under a hidden name.
    Words takenItemsLeft() const;
    /// Nothing is in the Trash but, at most, empty folders.
    bool isTrashCleared() const;

  private:
    Ended tidwen(Words arguments, const Fault& fault) const;
    void fill(bool withAttributes) const;
    std::filesystem::path trash() const { return volume_.host("/Users/alice/.Trash"); }

    TemporaryVolume volume_;
    TemporaryFolder scratch_;
    bool exclusiveRename_;
    std::optional<VolumeMemory> memory_;
};

/// Runs `runWith` on fresh volumes with a fault at the first call, the second, and so on, until it says that
/// the run came to its end before the fault. To save time one call of TIDWEN_FAULT_STEP is tried (6 unless
/// that is set; three times as many within one disk, where a run has few calls), with one fault after the
/// other in turn; with 1 each call with every fault. Gives the reason when these disks cannot be had here.
std::optional<std::string> sweepFaults(const Disks& disks, const std::string& what,
                                       const std::vector<Fault>& faults,
                                       const std::function<bool(const FaultyVolume&, const Fault&)>& runWith);

/// The disks as parameters of a test, and their names.
inline auto everyDisks() {
    return testing::Values(Disks{}, Disks{.trashElsewhere = true}, Disks{.exclusiveRename = false},
                           Disks{.trashElsewhere = true, .exclusiveRename = false});
}
std::string nameOf(const testing::TestParamInfo<Disks>& disks);

} // namespace tidwen::test

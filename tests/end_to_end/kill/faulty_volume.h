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

// Runs the program on volumes with one faulty call: the basis of the fault sweeps.

using Words = std::vector<std::string>;

/// The fault of one run of the program (fault_at_call.cpp).
struct Fault {
    int at = 0;                ///< number of the call that changes the disk, from 1; 0: none
    std::string kind = "kill"; ///< "interrupt", or the error number
    bool lasts = false;        ///< every later call fails too, as on a disconnected disk
};

/// How one run of the program ended.
struct Ended {
    bool killed = false;
    int exitCode = -1; ///< -1 if a signal ended it
    std::string output;
    std::string hit; ///< name and path of the faulty call; empty if the run ended before it
};

/// The disks of a sweep.
struct Disks {
    bool trashElsewhere = false; ///< the Trash is on another disk
    bool exclusiveRename = true; ///< the file system supports renames without replacing
};

/// A new volume of two applications with items of every kind, with its Trash on `otherDisk` unless that is
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

    /// The differences from the initial state, except the quarantine.
    Words changes() const { return memory_->changes(); }
    /// Mac paths of items other than folders outside the Trash.
    Words itemsLeft() const;
    /// Mac paths of the hidden items of moves between disks in progress.
    Words hiddenItems() const;
    /// Removed items that still exist, also under a hidden name.
    Words takenItemsLeft() const;
    /// The Trash contains at most empty folders.
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

/// Runs `runWith` on new volumes with a fault at the first call, the second, and so on, until the run ends
/// before the fault. To save time only one of TIDWEN_FAULT_STEP calls is tried (default 6; three times as
/// many within one disk, where a run has few calls), with alternating faults; with 1 each call is tried with
/// every fault. Returns the reason if these disks are unavailable here.
std::optional<std::string> sweepFaults(const Disks& disks, const std::string& what,
                                       const std::vector<Fault>& faults,
                                       const std::function<bool(const FaultyVolume&, const Fault&)>& runWith);

/// The disks as test parameters with names.
inline auto everyDisks() {
    return testing::Values(Disks{}, Disks{.trashElsewhere = true}, Disks{.exclusiveRename = false},
                           Disks{.trashElsewhere = true, .exclusiveRename = false});
}
std::string nameOf(const testing::TestParamInfo<Disks>& disks);

} // namespace tidwen::test

#pragma once

#include "base/message.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_bundles.h"

#include <string_view>
#include <vector>

namespace tidwen {

/// A place whose owners could not all be seen, so that what they may own is not claimed.
struct SweepGap {
    enum class Reason {
        absent,        ///< a missing folder: /Applications of an incomplete disk
        unreadable,    ///< a folder, or a part of a bundle, that cannot be read
        uncounted,     ///< more entries than are counted
        damaged,       ///< a bundle whose Info.plist cannot be read
        away,          ///< a broken link, perhaps to a disk that is not attached
        unreadableJob, ///< a launchd job whose property list cannot be read
    };
    Path place;
    Reason reason = Reason::unreadable;
    bool isOfOthers = false; ///< in another user's home: only shared items are in doubt

    /// What was left alone, and why.
    Message describe() const;
    friend bool operator==(const SweepGap&, const SweepGap&) = default;
};

std::string_view name(SweepGap::Reason reason);

/// The gaps of one look at the bundles, their contents and the launchd jobs, /Applications first.
/// `unreadableJobs`: folders and property lists of jobs.
std::vector<SweepGap> findSweepGaps(const FileSystem& files, const UserEnvironment& user,
                                    const BundleSnapshot& bundles, const std::vector<Path>& unreadableJobs);

/// The gap caused by an unreadable folder, job or other file.
SweepGap gapAt(const FileSystem& files, const UserEnvironment& user, const Path& unreadable);

/// Whether the item can be judged to have no owner in spite of the gaps.
bool canJudge(const Path& item, const UserEnvironment& user, const std::vector<SweepGap>& gaps);

} // namespace tidwen

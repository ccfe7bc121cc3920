#pragma once

#include "base/message.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/installed_bundles.h"

#include <string_view>
#include <vector>

namespace tidwen {

/// A place whose owners could not all be seen, so that what they may own is not claimed.
struct SweepGap {
    enum class Reason {
        absent,     ///< there is no such folder: /Applications of a disk that is not whole
        unreadable, ///< a folder, or a part of a bundle or job, that cannot be read
        uncounted,  ///< holds more than is counted
        damaged,    ///< a bundle whose Info.plist cannot be read
        away,       ///< a link that leads nowhere, perhaps to a disk that is not attached
    };
    Path place;
    Reason reason = Reason::unreadable;
    bool isOfOthers = false; ///< in another user's home: only what all users share is in doubt

    /// What was left alone, and why.
    Message describe() const;
    friend bool operator==(const SweepGap&, const SweepGap&) = default;
};

std::string_view name(SweepGap::Reason reason);

/// What one look at the bundles, at what they carry and at the launchd jobs left unseen; that of
/// /Applications first. `unreadableJobs`: their folders and property lists.
std::vector<SweepGap> findSweepGaps(const FileSystem& files, const UserEnvironment& user,
                                    const BundleSnapshot& bundles, const std::vector<Path>& unreadableJobs);

/// The gap that a folder or file leaves which cannot be read.
SweepGap gapAt(const FileSystem& files, const UserEnvironment& user, const Path& unreadable);

/// Whether it can be told in spite of the gaps that the item is nobody's.
bool canJudge(const Path& item, const UserEnvironment& user, const std::vector<SweepGap>& gaps);

} // namespace tidwen

#include "sweep/sweep_gaps.h"

#include "base/path.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace tidwen {
namespace {

const Path& applicationsFolder() {
    static const Path folder("/Applications");
    return folder;
}

bool isWithin(const Path& item, const std::optional<Path>& folder) {
    return folder && item.isWithinIgnoringCase(*folder);
}

bool isOfOthers(const Path& place, const UserEnvironment& user) {
    if (place.isWithin(user.home)) return false;
    const bool isNamed = std::any_of(user.otherHomes.begin(), user.otherHomes.end(),
                                     [&](const Path& home) { return place.isWithin(home); });
    return isNamed || (place.isWithin(Path("/Users")) && !place.isWithin(Path("/Users/Shared")));
}

bool leadsNowhere(const FileSystem& files, const Path& item) {
    const auto info = files.info(item);
    return info && info->kind == FileKind::symbolicLink && !files.infoFollowingLinks(item);
}

bool isJob(const Path& item) {
    const auto folder = item.parent().lastComponent();
    return item.lowercasedExtension() == "plist" && (folder == "LaunchAgents" || folder == "LaunchDaemons");
}

/// Drops gaps inside a folder that is a gap itself.
void dropWhatLiesInOthers(std::vector<SweepGap>& gaps) {
    std::set<std::pair<Path, bool>> unreadable;
    for (const auto& gap : gaps)
        if (gap.reason == SweepGap::Reason::unreadable) unreadable.emplace(gap.place, gap.isOfOthers);
    std::erase_if(gaps, [&](const SweepGap& gap) {
        for (Path above = gap.place; !above.isRoot();)
            if (above = above.parent(); unreadable.contains({above, gap.isOfOthers})) return true;
        return false;
    });
}

} // namespace

std::string_view name(SweepGap::Reason reason) {
    switch (reason) {
    case SweepGap::Reason::absent:
        return "absent";
    case SweepGap::Reason::unreadable:
        return "unreadable";
    case SweepGap::Reason::uncounted:
        return "uncounted";
    case SweepGap::Reason::damaged:
        return "damaged";
    case SweepGap::Reason::away:
        return "away";
    case SweepGap::Reason::unreadableJob:
        return "unreadableJob";
    }
    return "unreadable";
}

Message SweepGap::describe() const {
    const auto text = [&] {
        switch (reason) {
        case Reason::absent:
            return "orphans.gap.absent %@";
        case Reason::unreadable:
            return isOfOthers ? "orphans.gap.unreadable.shared %@" : "orphans.gap.unreadable %@";
        case Reason::uncounted:
            return isOfOthers ? "orphans.gap.uncounted.shared %@" : "orphans.gap.uncounted %@";
        case Reason::damaged:
            return isOfOthers ? "orphans.gap.damaged.shared %@" : "orphans.gap.damaged %@";
        case Reason::away:
            return isOfOthers ? "orphans.gap.away.shared %@" : "orphans.gap.away %@";
        case Reason::unreadableJob:
            return isOfOthers ? "orphans.gap.unreadableJob.shared %@" : "orphans.gap.unreadableJob %@";
        }
        return "orphans.gap.unreadable %@";
    };
    return {text(), {place.string()}};
}

std::vector<SweepGap> findSweepGaps(const FileSystem& files, const UserEnvironment& user,
                                    const BundleSnapshot& bundles, const std::vector<Path>& unreadableJobs) {
    const auto coverage = bundles.coverageWithContents();
    std::vector<SweepGap> gaps;
    const auto add = [&](const Path& place, SweepGap::Reason reason) {
        gaps.push_back({place, reason, isOfOthers(place, user)});
    };
    const auto addUnreadable = [&](const Path& place) { gaps.push_back(gapAt(files, user, place)); };
    for (const auto& folder : coverage.unreadable)
        addUnreadable(folder);
    for (const auto& bundle : coverage.damaged)
        add(bundle, SweepGap::Reason::damaged);
    for (const auto& folder : coverage.uncounted)
        add(folder, SweepGap::Reason::uncounted);
    for (const auto& job : unreadableJobs)
        addUnreadable(job);
    dropWhatLiesInOthers(gaps);

    const auto isOfApplications = [](const SweepGap& gap) {
        return gap.place.isWithin(applicationsFolder());
    };
    if (!coverage.seesApplications && std::none_of(gaps.begin(), gaps.end(), isOfApplications))
        add(applicationsFolder(),
            files.exists(applicationsFolder()) ? SweepGap::Reason::unreadable : SweepGap::Reason::absent);
    std::stable_partition(gaps.begin(), gaps.end(), isOfApplications);
    return gaps;
}

SweepGap gapAt(const FileSystem& files, const UserEnvironment& user, const Path& unreadable) {
    const auto reason = leadsNowhere(files, unreadable) ? SweepGap::Reason::away
                        : isJob(unreadable)             ? SweepGap::Reason::unreadableJob
                                                        : SweepGap::Reason::unreadable;
    return {unreadable, reason, isOfOthers(unreadable, user)};
}

bool canJudge(const Path& item, const UserEnvironment& user, const std::vector<SweepGap>& gaps) {
    if (gaps.empty()) return true;
    const bool isOwn =
        isWithin(item, user.home) || isWithin(item, user.cacheFolder) || isWithin(item, user.temporaryFolder);
    return std::all_of(gaps.begin(), gaps.end(),
                       [&](const SweepGap& gap) { return gap.isOfOthers && isOwn; });
}

} // namespace tidwen

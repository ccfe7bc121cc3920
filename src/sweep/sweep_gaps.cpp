#include "sweep/sweep_gaps.h"

#include <algorithm>
#include <optional>

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
    return place.isWithin(Path("/Users")) && !place.isWithin(user.home)
           && !place.isWithin(Path("/Users/Shared"));
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
    for (const auto& folder : coverage.unreadable)
        add(folder, SweepGap::Reason::unreadable);
    for (const auto& bundle : coverage.damaged)
        add(bundle, SweepGap::Reason::unreadable);
    for (const auto& folder : coverage.uncounted)
        add(folder, SweepGap::Reason::uncounted);
    for (const auto& job : unreadableJobs)
        add(job, SweepGap::Reason::unreadable);

    const auto isOfApplications = [](const SweepGap& gap) {
        return gap.place.isWithin(applicationsFolder());
    };
    if (!coverage.seesApplications && std::none_of(gaps.begin(), gaps.end(), isOfApplications))
        add(applicationsFolder(),
            files.exists(applicationsFolder()) ? SweepGap::Reason::unreadable : SweepGap::Reason::absent);
    std::stable_partition(gaps.begin(), gaps.end(), isOfApplications);
    return gaps;
}

bool canJudge(const Path& item, const UserEnvironment& user, const std::vector<SweepGap>& gaps) {
    if (gaps.empty()) return true;
    const bool isOwn =
        isWithin(item, user.home) || isWithin(item, user.cacheFolder) || isWithin(item, user.temporaryFolder);
    return std::all_of(gaps.begin(), gaps.end(),
                       [&](const SweepGap& gap) { return gap.isOfOthers && isOwn; });
}

} // namespace tidwen

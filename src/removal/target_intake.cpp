#include "removal/target_intake.h"

#include "base/message.h"
#include "base/path.h"
#include "base/text.h"
#include "scan/applications/app_target.h"
#include "scan/applications/shared_names.h"

#include <algorithm>
#include <set>
#include <string>

namespace tidwen {

Message describeProtected(const AppTarget& target) {
    return {"error.protectedApp %@", {printable(target.name)}};
}

tl::expected<AppTarget, Message> goneTarget(const std::string& bundleID, const FormerApplications& former) {
    using Error = AppTargetLoaderError;
    const auto lower = lowercased(bundleID);
    if (isFromApple(lower)) return tl::unexpected(Message{std::string(errorKey(Error::systemApplication))});
    if (lower == tidwenBundleID) return tl::unexpected(Message{std::string(errorKey(Error::selfTarget))});
    return former.describe(bundleID);
}

BundleReach reachFor(const std::vector<AppTarget>& targets) {
    return std::ranges::any_of(targets, isGone) ? BundleReach::further : BundleReach::usual;
}

LoadedTargets loadTargets(const std::vector<Path>& bundles, const AppTargetLoader& loader) {
    LoadedTargets loaded;
    std::set<Path> seen;
    for (const auto& each : bundles) {
        const auto bundle = each.hasTraversal() ? each : each.standardized();
        if (!seen.insert(bundle).second) continue;
        if (auto target = loader.load(bundle))
            loaded.targets.push_back(std::move(*target));
        else
            loaded.failures.push_back(
                {printable(bundle.lastComponent()), {std::string(errorKey(target.error()))}});
    }
    return loaded;
}

void add(const std::vector<GoneApplication>& gone, const FormerApplications& former, LoadedTargets& loaded) {
    for (const auto& each : gone)
        if (auto target = goneTarget(each.bundleID, former))
            loaded.targets.push_back(std::move(*target));
        else
            loaded.failures.push_back({printable(each.bundleID), std::move(target.error())});
}

TargetIntake checkProtection(LoadedTargets loaded, const Protection& protection,
                             ProtectedTargets ofProtected) {
    TargetIntake intake{.targets = {}, .failures = std::move(loaded.failures), .refused = {}};
    if (ofProtected == ProtectedTargets::shown) {
        intake.targets = std::move(loaded.targets);
        return intake;
    }
    for (auto& target : loaded.targets) {
        const bool isProtected =
            isGone(target) ? protection.containsOwner(target.bundleID) : protection.contains(target.bundleID);
        if (isProtected) intake.failures.push_back({.reason = describeProtected(target)});
        (isProtected ? intake.refused : intake.targets).push_back(std::move(target));
    }
    return intake;
}

} // namespace tidwen

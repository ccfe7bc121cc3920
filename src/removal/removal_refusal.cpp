#include "removal/removal_refusal.h"

#include "base/text.h"
#include "operations/removal_operation.h"
#include "quarantine/manifest.h"
#include "quarantine/trash_lock.h"
#include "removal/chosen_items.h"
#include "removal/target_intake.h"
#include "removal/unmovable_items.h"
#include "scan/policy/removability.h"

#include <string>

namespace tidwen {

std::optional<RemovalRefusal> whyNotBegin(const std::vector<RemovalTarget>& chosen, RemovalMode mode,
                                          const RefusalGrounds& grounds) {
    const auto& [files, user, rights, protection] = grounds;
    if (const auto& problem = protection.problem) return RemovalRefusal{*problem};
    for (const auto& each : chosen)
        if (protection.contains(each.target.bundleID)) return RemovalRefusal{describeProtected(each.target)};
    if (const auto unusable = whyTrashIsUnusable(user, files)) return RemovalRefusal{*unusable};
    const PathPolicy policy(user, files);
    if (mode == RemovalMode::uninstall)
        for (const auto& each : chosen) {
            if (!takesTheApplication(each)) continue;
            const auto why = whyNotRemovable(each.target, files, policy, user, rights);
            // Permissions are checked below, for all items.
            if (why && why->reason != ImmovableApplication::Reason::noRights)
                return RemovalRefusal{why->describe(each.target)};
        }
    // The destinations are irrelevant here.
    const auto plan = buildRemovalPlan(chosen, {user.trash(), chosen.size() > 1}, mode);
    if (const auto count = manifestEntries(plan).size(); count > maxManifestEntries)
        return RemovalRefusal{
            {"error.tooManySteps %lld %lld", {std::to_string(count), std::to_string(maxManifestEntries)}}};
    auto items = unmovableItems(plan, files, rights);
    if (items.empty()) return std::nullopt;
    return RemovalRefusal{
        {"error.unmovableItems %@ %lld", {printable(items.back().string()), std::to_string(items.size())}},
        items};
}

std::optional<RemovalRefusal> whyNotByDefault(const std::vector<ScanResult>& results) {
    for (const auto& result : results) {
        if (!result.immovable) continue;
        RemovalRefusal refusal{result.immovable->describe(result.target)};
        if (result.immovable->reason == ImmovableApplication::Reason::noRights)
            refusal.unmovableItems = {result.target.bundleURL};
        return refusal;
    }
    return std::nullopt;
}

} // namespace tidwen

#include "removal/target_intake.h"

#include "base/text.h"

#include <set>

namespace tidwen {

Message describeProtected(const AppTarget& target) {
    return {"error.protectedApp %@", {printable(target.name)}};
}

TargetIntake takeIn(const std::vector<Path>& bundles, const AppTargetLoader& loader,
                    const ProtectedApps& protectedApps, ProtectedTargets ofProtected) {
    TargetIntake intake;
    std::vector<AppTarget> loaded;
    std::set<Path> seen;
    for (const auto& bundle : bundles) {
        if (!seen.insert(bundle.standardized()).second) continue;
        if (auto target = loader.load(bundle))
            loaded.push_back(std::move(*target));
        else
            intake.failures.push_back(
                {printable(bundle.lastComponent()), {std::string(errorKey(target.error()))}});
    }
    if (ofProtected == ProtectedTargets::shown) {
        intake.targets = std::move(loaded);
        return intake;
    }
    auto [allowed, refused] = protectedApps.partition(std::move(loaded));
    for (const auto& target : refused)
        intake.failures.push_back({.reason = describeProtected(target)});
    intake.refused = std::move(refused);
    intake.targets = std::move(allowed);
    return intake;
}

} // namespace tidwen

#include "removal/target_intake.h"

#include "base/text.h"
#include "operations/admin_batch.h"
#include "scan/applications/identifier_form.h"

#include <set>

namespace tidwen {

Message describeProtected(const AppTarget& target) {
    const bool isPlain = isIdentifier(target.bundleID);
    return {
        "error.protectedApp %@ %@",
        {printable(target.name), isPlain ? target.bundleID : adminBatch::quoted(printable(target.bundleID))}};
}

TargetIntake takeIn(const std::vector<Path>& bundles, const AppTargetLoader& loader,
                    const ProtectedApps& protectedApps, const Texts& texts, ProtectedTargets ofProtected) {
    TargetIntake intake;
    std::vector<AppTarget> loaded;
    std::set<Path> seen;
    for (const auto& bundle : bundles) {
        if (!seen.insert(bundle.standardized()).second) continue;
        if (auto target = loader.load(bundle))
            loaded.push_back(std::move(*target));
        else
            intake.failures.push_back(printable(bundle.lastComponent()) + ": "
                                      + texts.text(errorKey(target.error())));
    }
    if (ofProtected == ProtectedTargets::shown) {
        intake.targets = std::move(loaded);
        return intake;
    }
    auto [allowed, refused] = protectedApps.partition(std::move(loaded));
    for (const auto& target : refused)
        intake.failures.push_back(texts.text(describeProtected(target)));
    intake.targets = std::move(allowed);
    return intake;
}

} // namespace tidwen

#include "removal/target_intake.h"

#include "base/text.h"

#include <set>

namespace tidwen {

TargetIntake takeIn(const std::vector<Path>& bundles, const AppTargetLoader& loader,
                    const ProtectedApps& protectedApps, const Texts& texts) {
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
    auto [allowed, refused] = protectedApps.partition(std::move(loaded));
    for (const auto& target : refused)
        intake.failures.push_back(texts.text("error.protectedApp %@", {printable(target.name)}));
    intake.targets = std::move(allowed);
    return intake;
}

} // namespace tidwen

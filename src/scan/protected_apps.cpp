#include "scan/protected_apps.h"

namespace tidwen {

ProtectedApps::ProtectedApps(Defaults& defaults) : defaults_(defaults) {
    const auto stored = defaults_.value(defaultsKey);
    const auto identifiers = stored ? stored->asStrings() : std::nullopt;
    if (identifiers) bundleIDs_.insert(identifiers->begin(), identifiers->end());
}

bool ProtectedApps::toggle(const std::string& bundleID) {
    auto changed = bundleIDs_;
    if (changed.erase(bundleID) == 0) changed.insert(bundleID);
    if (!defaults_.setValue(defaultsKey, PropertyListArray(changed.begin(), changed.end()))) return false;
    bundleIDs_ = std::move(changed);
    return true;
}

ProtectedApps::Partition ProtectedApps::partition(std::vector<AppTarget> targets) const {
    Partition parts;
    for (auto& target : targets)
        (contains(target.bundleID) ? parts.protectedTargets : parts.allowed).push_back(std::move(target));
    return parts;
}

} // namespace tidwen

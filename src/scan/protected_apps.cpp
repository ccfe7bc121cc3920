#include "scan/protected_apps.h"

namespace tidwen {

namespace {

std::set<std::string> read(const std::optional<PropertyListValue>& stored) {
    const auto identifiers = stored ? stored->asStrings() : std::nullopt;
    if (!identifiers) return {};
    return {identifiers->begin(), identifiers->end()};
}

} // namespace

ProtectedApps::ProtectedApps(Defaults& defaults)
    : defaults_(defaults), bundleIDs_(read(defaults.value(defaultsKey))) {}

bool ProtectedApps::toggle(const std::string& bundleID) {
    const bool adds = !contains(bundleID);
    std::set<std::string> changed;
    const bool isStored = defaults_.update(defaultsKey, [&](const auto& stored) -> PropertyListValue {
        changed = read(stored); // another process may have added to it since
        if (adds)
            changed.insert(bundleID);
        else
            changed.erase(bundleID);
        return PropertyListArray(changed.begin(), changed.end());
    });
    if (isStored) bundleIDs_ = std::move(changed);
    return isStored;
}

ProtectedApps::Partition ProtectedApps::partition(std::vector<AppTarget> targets) const {
    Partition parts;
    for (auto& target : targets)
        (contains(target.bundleID) ? parts.protectedTargets : parts.allowed).push_back(std::move(target));
    return parts;
}

} // namespace tidwen

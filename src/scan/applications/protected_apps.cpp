#include "scan/applications/protected_apps.h"

#include "base/message.h"
#include "base/property_list.h"
#include "base/text.h"

#include <optional>
#include <utility>

namespace tidwen {

namespace {

bool isReadable(const std::optional<PropertyListValue>& stored) {
    return !stored || stored->asStrings();
}

std::set<std::string> read(const std::optional<PropertyListValue>& stored) {
    const auto identifiers = stored ? stored->asStrings() : std::nullopt;
    if (!identifiers) return {};
    return {identifiers->begin(), identifiers->end()};
}

} // namespace

ProtectedApps::ProtectedApps(Defaults& defaults) : defaults_(defaults) {
    show(read(defaults.value(defaultsKey)));
}

std::optional<Message> ProtectedApps::problem() const {
    if (auto problem = defaults_.problem()) return problem;
    if (isReadable(defaults_.value(defaultsKey))) return std::nullopt;
    return Message{"settings.problem.protectedList"};
}

bool ProtectedApps::toggle(const std::string& bundleID) {
    const bool adds = !contains(bundleID);
    std::set<std::string> edited;
    bool isKnown = true;
    const bool isStored =
        defaults_.update(defaultsKey, [&](const auto& stored) -> std::optional<PropertyListValue> {
            isKnown = isReadable(stored);
            if (!isKnown) return stored;
            edited = read(stored); // another process may have added to it since
            if (adds)
                edited.insert(bundleID);
            else
                std::erase_if(edited,
                              [&](const auto& each) { return lowercased(each) == lowercased(bundleID); });
            return PropertyListArray(edited.begin(), edited.end());
        });
    if (isStored && isKnown) show(std::move(edited));
    return isStored && isKnown;
}

void ProtectedApps::reload() {
    if (!problem()) show(read(defaults_.value(defaultsKey)));
}

void ProtectedApps::show(std::set<std::string> bundleIDs) {
    if (bundleIDs == bundleIDs_) return;
    bundleIDs_ = std::move(bundleIDs);
    protects_ = {bundleIDs_.begin(), bundleIDs_.end()};
    changed.emit();
}

ProtectedApps::Partition ProtectedApps::partition(std::vector<AppTarget> targets) const {
    Partition parts;
    for (auto& target : targets)
        (contains(target.bundleID) ? parts.protectedTargets : parts.allowed).push_back(std::move(target));
    return parts;
}

} // namespace tidwen

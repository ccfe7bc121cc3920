#include "scan/applications/protected_apps.h"

#include "base/message.h"
#include "base/property_list.h"
#include "base/text.h"

#include <algorithm>
#include <iterator>
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

std::optional<Message> whyUnknown(const Defaults& defaults) {
    if (auto problem = defaults.problem()) return problem;
    if (isReadable(defaults.value(ProtectedApps::defaultsKey))) return std::nullopt;
    return Message{"settings.problem.protectedList"};
}

} // namespace

bool Protection::containsOwner(const std::string& bundleID) const {
    for (auto end = bundleID.size(); end != std::string::npos && end > 0; end = bundleID.rfind('.', end - 1))
        if (contains(bundleID.substr(0, end))) return true;
    return false;
}

Protection readProtection(const Defaults& defaults) {
    const auto identifiers = read(defaults.value(ProtectedApps::defaultsKey));
    return {{identifiers.begin(), identifiers.end()}, whyUnknown(defaults)};
}

ProtectedApps::ProtectedApps(Defaults& defaults) : defaults_(defaults) {
    show(read(defaults.value(defaultsKey)));
}

std::optional<Message> ProtectedApps::problem() const {
    return whyUnknown(defaults_);
}

bool ProtectedApps::toggle(const std::string& bundleID) {
    return set({bundleID}, !contains(bundleID));
}

bool ProtectedApps::set(const std::vector<std::string>& bundleIDs, bool areProtected) {
    if (!isReadable(defaults_.value(defaultsKey))) return false;
    const bool isStored = defaults_.update(
        defaultsKey, [bundleIDs, areProtected](const auto& stored) -> std::optional<PropertyListValue> {
            if (!isReadable(stored)) return stored;
            auto edited = read(stored); // another process may have added to it since
            for (const auto& bundleID : bundleIDs)
                if (areProtected)
                    edited.insert(bundleID);
                else
                    std::erase_if(edited,
                                  [&](const auto& each) { return lowercased(each) == lowercased(bundleID); });
            return PropertyListArray(edited.begin(), edited.end());
        });
    if (isStored) reload();
    return isStored;
}

void ProtectedApps::reload() {
    if (!problem()) show(read(defaults_.value(defaultsKey)));
}

void ProtectedApps::show(std::set<std::string> bundleIDs) {
    std::set<std::string> different;
    std::set_symmetric_difference(bundleIDs_.begin(), bundleIDs_.end(), bundleIDs.begin(), bundleIDs.end(),
                                  std::inserter(different, different.end()));
    if (different.empty()) return;
    bundleIDs_ = std::move(bundleIDs);
    protects_ = {bundleIDs_.begin(), bundleIDs_.end()};
    changed.emit(different);
}

} // namespace tidwen

#include "removal/unseen.h"

#include "base/path.h"
#include "platform/user_environment.h"
#include "scan/permissions/permission_audit.h"

#include <algorithm>

namespace tidwen {

namespace {

void addOnce(std::vector<Path>& all, const std::vector<Path>& more) {
    for (const auto& path : more)
        if (std::ranges::find(all, path) == all.end()) all.push_back(path);
}

} // namespace

bool Unseen::knowsAllOwners() const {
    return owners.absent.empty() && owners.unreadable.empty() && owners.uncounted.empty()
           && owners.damaged.empty();
}

Unseen unseenIn(const std::vector<ScanResult>& results, const UserEnvironment& user) {
    Unseen unseen;
    for (const auto& result : results) {
        addOnce(unseen.unreadableLocations, result.unreadableLocations);
        for (const auto scope : result.permissions.unreadable)
            addOnce(unseen.unreadableLocations, {PermissionAudit::databasePath(scope, user)});
        unseen.leftOut += result.leftOut;
        addOnce(unseen.owners.unreadable, result.owners.unreadable);
        addOnce(unseen.owners.uncounted, result.owners.uncounted);
        addOnce(unseen.owners.damaged, result.owners.damaged);
        addOnce(unseen.owners.absent, result.owners.absent);
    }
    return unseen;
}

} // namespace tidwen

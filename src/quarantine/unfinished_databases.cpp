#include "quarantine/unfinished_databases.h"

#include "scan/permissions/permission_audit.h"

namespace tidwen {

void dropUnfinishedDatabases(const UserEnvironment& user, FileSystem& files) {
    using Scope = PermissionGrant::Scope;
    for (const auto scope : {Scope::user, Scope::system}) {
        const auto database = files.resolveParent(PermissionAudit::databasePath(scope, user));
        if (!database) continue;
        if (const auto lock = files.lock(database->parent())) files.dropUnfinishedReplacement(*database);
    }
}

} // namespace tidwen

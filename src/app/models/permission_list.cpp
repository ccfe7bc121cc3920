#include "app/models/permission_list.h"

#include "app/models/card_row.h"
#include "app/widgets/words.h"
#include "scan/permissions/permission_audit.h"

#include <string>

namespace tidwen {

QVariant PermissionList::rowData(const PermissionRow& row, int role) const {
    switch (role) {
    case Qt::DisplayRole:
        return shown(permissionTitle(row.grant.service, texts_));
    case CardRow::second:
        return secondLine(row.grant);
    case CardRow::icon:
        return QStringLiteral("lock");
    case CardRow::control:
        return static_cast<int>(row.isRevoking ? CardRow::Control::none : CardRow::Control::button);
    case CardRow::controlWords:
        return words(texts_, "permissions.sheet.revoke");
    case Qt::AccessibleTextRole:
        return rowData(row, Qt::DisplayRole).toString() + QStringLiteral(", ") + secondLine(row.grant);
    default:
        return {};
    }
}

QString PermissionList::secondLine(const PermissionGrant& grant) const {
    auto detail = shown(PermissionsSheet::detail(grant, texts_));
    if (grant.state.kind == PermissionGrant::State::Kind::limited) return detail; // which begins with that
    auto state = words(texts_, "cli.permission." + std::string(name(grant.state.kind)));
    if (!state.isEmpty()) state.replace(0, 1, state.at(0).toUpper()); // it begins the line
    return detail.isEmpty() ? state : state + QStringLiteral(" · ") + detail;
}

} // namespace tidwen

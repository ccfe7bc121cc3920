#pragma once

#include "app/models/sectioned_list.h"
#include "base/texts.h"
#include "scan/permissions/permission_audit.h"
#include "system/permissions_sheet.h"

namespace tidwen {

/// The permissions of one application as an item model, in one section without words.
class PermissionList final : public SectionedList<PermissionRow> {
  public:
    /// `sheet` and `texts` outlive it.
    PermissionList(PermissionsSheet& sheet, const Texts& texts)
        : SectionedList(sheet.rows, 1, [](const PermissionRow&) { return 0; }), texts_(texts) {}

  protected:
    QVariant rowData(const PermissionRow& row, int role) const override;
    QVariant sectionData(int /*section*/, int /*role*/) const override { return {}; }

  private:
    QString secondLine(const PermissionGrant& grant) const;

    const Texts& texts_;
};

} // namespace tidwen

#pragma once

#include "app/models/sectioned_list.h"
#include "base/texts.h"
#include "sweep/installer_scanner.h"
#include "sweep/installers_model.h"

namespace tidwen {

/// Installers as an item model: those of installed applications, then the others.
class InstallerList final : public SectionedList<InstallerRow> {
  public:
    /// `model` and `texts` outlive it.
    InstallerList(InstallersModel& model, const Texts& texts);

    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  protected:
    QVariant rowData(const InstallerRow& row, int role) const override;
    QVariant sectionData(int section, int role) const override;

  private:
    QString secondLine(const InstallerFile& file) const;
    QString spoken(const InstallerRow& row) const;

    InstallersModel& model_;
    const Texts& texts_;
};

} // namespace tidwen

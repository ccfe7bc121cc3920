#pragma once

#include "app/models/sectioned_list.h"
#include "base/texts.h"
#include "system/startup_items_model.h"

namespace tidwen {

/// Startup items as an item model: what was left behind, what nobody claims, what belongs to applications.
class StartupList final : public SectionedList<StartupItemRow> {
  public:
    /// `model` and `texts` outlive it.
    StartupList(StartupItemsModel& model, const Texts& texts);

    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  protected:
    QVariant rowData(const StartupItemRow& row, int role) const override;
    QVariant sectionData(int section, int role) const override;

  private:
    QStringList badges(const StartupItemRow& row) const;
    QString spoken(const StartupItemRow& row) const;
    QString toolTip(const StartupItemRow& row) const;

    StartupItemsModel& model_;
    const Texts& texts_;
};

} // namespace tidwen

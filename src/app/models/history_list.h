#pragma once

#include "base/observable.h"
#include "base/texts.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"

#include <QAbstractListModel>

namespace tidwen {

/// Past removals as an item model, newest first.
class HistoryList final : public QAbstractListModel {
  public:
    enum ItemRole { second = Qt::UserRole, bundleID, badge, badgeIsGood };

    /// `history` and `texts` outlive it.
    HistoryList(HistoryModel& history, const Texts& texts);

    const RemovalHistoryEntry& entry(const QModelIndex& index) const {
        return history_.entries.get()[static_cast<std::size_t>(index.row())];
    }
    int rowCount(const QModelIndex& above = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    QString title(const RemovalHistoryEntry& entry) const;
    QString secondLine(const RemovalHistoryEntry& entry) const;
    QString badgeOf(const RemovalHistoryEntry& entry) const;

    HistoryModel& history_;
    const Texts& texts_;
    int rows_ = 0; ///< as the view knows them
    Subscription following_;
};

} // namespace tidwen

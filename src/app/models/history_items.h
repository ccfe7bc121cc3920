#pragma once

#include "base/texts.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "quarantine/run_items.h"

#include <QAbstractListModel>
#include <QModelIndex>
#include <QString>
#include <string>
#include <vector>

namespace tidwen {

/// What one run moved. Items that are no longer in quarantine say where they are and cannot be chosen.
class HistoryItems final : public QAbstractListModel {
  public:
    /// `texts` outlives it.
    HistoryItems(const Texts& texts, UserEnvironment user);

    enum Roles : int {
        state = Qt::UserRole, ///< where an item is that is not in quarantine; empty for others
        folder,               ///< the one it came from
    };

    /// Null for none. The rows stay, with what is chosen among them, while they are the same.
    void show(const RemovalHistoryEntry* entry);
    /// The old places, as the run's record has them.
    ItemChoice choice(const QModelIndexList& rows) const;

    int rowCount(const QModelIndex& above = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    struct Item {
        std::string source;
        ItemPlace place = ItemPlace::inQuarantine;
        friend bool operator==(const Item&, const Item&) = default;
    };

    QString stateWords(const Item& item) const;

    const Texts& texts_;
    UserEnvironment user_;
    std::vector<Item> items_;
};

} // namespace tidwen

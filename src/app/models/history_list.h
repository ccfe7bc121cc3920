#pragma once

#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "quarantine/manifest.h"
#include "quarantine/unfinished_run.h"

#include <QAbstractListModel>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// Past removals as an item model, newest first, under headings for their days.
class HistoryList final : public QAbstractListModel {
  public:
    enum ItemRole { second = Qt::UserRole, bundleID, bundle, badge, badgeIsGood, isHeading };

    /// `history` and `texts` outlive it.
    HistoryList(HistoryModel& history, const Texts& texts);

    /// Shows only runs that removed what is called so: an application or an item.
    void setQuery(const QString& query);
    bool isSearched() const { return !sought_.empty(); }

    /// Null for a heading.
    const RemovalHistoryEntry* entry(const QModelIndex& index) const;
    /// The run in this folder, else the first one; invalid when there is none.
    QModelIndex indexOf(const Path& root) const;
    /// What is the matter with a run, and what helps; empty when nothing is.
    QString help(const RemovalHistoryEntry& entry) const;
    /// What a run that is not in the list is called.
    QString interruptedTitle(const UnfinishedRun& run) const;
    int rowCount(const QModelIndex& above = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    struct Row {
        QString heading;                  ///< above the first run of its day
        std::optional<std::size_t> entry; ///< none for a heading
    };
    void rebuild();
    bool isSought(std::size_t entry);
    const Row* row(const QModelIndex& index) const;
    QString heading(const RemovalHistoryEntry& entry, Timestamp now) const;
    QString title(const Path& root, const Manifest& manifest) const;
    QString secondLine(const RemovalHistoryEntry& entry) const;
    QString badgeOf(const RemovalHistoryEntry& entry) const;

    HistoryModel& history_;
    const Texts& texts_;
    std::string sought_;                   ///< in search form
    std::vector<std::string> searchTexts_; ///< of the runs, once there was a search
    std::vector<Row> rows_;                ///< as the view knows them
    Subscription following_;
};

} // namespace tidwen

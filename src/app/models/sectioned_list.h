#pragma once

#include "app/models/card_row.h"
#include "base/list_change.h"
#include "base/observable.h"
#include "base/observable_list.h"

#include <QAbstractItemModel>
#include <algorithm>
#include <functional>
#include <vector>

namespace tidwen {

/// The rows of an observable list under headings, in the order of the list. Follows the list row by row.
template<class Row>
class SectionedList : public QAbstractItemModel {
  public:
    using SectionOf = std::function<int(const Row&)>;

    /// `list` outlives it; `sectionOf` tells the number of a row's section, below `sections`.
    SectionedList(ObservableList<Row>& list, int sections, SectionOf sectionOf)
        : list_(list),
          sectionOf_(std::move(sectionOf)),
          sections_(static_cast<std::size_t>(sections)),
          willChange_(list.willChange.connect([this](const RowChange& change) { willChange(change); })),
          changed_(list.changed.connect([this](const RowChange& change) { changed(change); })) {
        rebuild();
    }

    /// Null for a heading.
    const Row* row(const QModelIndex& index) const {
        if (!index.isValid() || index.internalId() == heading) return nullptr;
        return &sections_[index.internalId() - 1][static_cast<std::size_t>(index.row())];
    }

    QModelIndex index(int row, int column, const QModelIndex& above = {}) const override {
        if (row < 0 || column != 0 || row >= rowCount(above)) return {};
        return createIndex(row, 0,
                           above.isValid() ? static_cast<quintptr>(above.row()) + 1 : quintptr(heading));
    }
    QModelIndex parent(const QModelIndex& index) const override {
        return row(index) ? sectionIndex(index.internalId() - 1) : QModelIndex();
    }
    int rowCount(const QModelIndex& above = {}) const override {
        if (!above.isValid()) return static_cast<int>(sections_.size());
        return row(above) ? 0 : static_cast<int>(sections_[static_cast<std::size_t>(above.row())].size());
    }
    int columnCount(const QModelIndex& /*above*/ = {}) const override { return 1; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid()) return {};
        const auto* shown = row(index);
        if (role == CardRow::kind)
            return static_cast<int>(shown ? CardRow::Kind::row : CardRow::Kind::section);
        return shown ? rowData(*shown, role) : sectionData(index.row(), role);
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        const auto* shown = row(index);
        if (!shown) return index.isValid() ? Qt::ItemIsEnabled : Qt::NoItemFlags;
        const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
        return rowData(*shown, Qt::CheckStateRole).isValid() ? flags | Qt::ItemIsUserCheckable : flags;
    }

  protected:
    virtual QVariant rowData(const Row& row, int role) const = 0;
    virtual QVariant sectionData(int section, int role) const = 0;

  private:
    static constexpr quintptr heading = 0;
    /// The rows of one section that lie in a range of the list: they follow one another in the section, too.
    struct Run {
        std::size_t first = 0;
        std::size_t count = 0;
        int from() const { return static_cast<int>(first); }
        int to() const { return static_cast<int>(first + count) - 1; }
    };

    QModelIndex sectionIndex(std::size_t section) const {
        return createIndex(static_cast<int>(section), 0, quintptr(heading));
    }
    std::size_t numberOf(const Row& row) const { return static_cast<std::size_t>(sectionOf_(row)); }
    std::size_t count(std::size_t section, std::size_t first, std::size_t end) const {
        const auto at = [&](std::size_t i) { return list_.rows().begin() + static_cast<std::ptrdiff_t>(i); };
        return static_cast<std::size_t>(
            std::count_if(at(first), at(end), [&](const Row& row) { return numberOf(row) == section; }));
    }
    template<class Do>
    void eachRun(const RowChange& change, const Do& act) {
        for (std::size_t section = 0; section < sections_.size(); ++section) {
            const auto end = change.first + change.count;
            const Run run{count(section, 0, change.first), count(section, change.first, end)};
            if (run.count > 0) act(section, run);
        }
    }
    /// Copies a run of the list to its section.
    void copy(std::size_t section, const Run& run) {
        std::size_t number = 0;
        for (const auto& each : list_.rows()) {
            if (numberOf(each) != section) continue;
            if (number >= run.first && number < run.first + run.count) sections_[section][number] = each;
            ++number;
        }
    }

    void willChange(const RowChange& change) {
        if (change.kind == RowChange::Kind::reset) beginResetModel();
        if (change.kind != RowChange::Kind::removed) return;
        eachRun(change, [this](std::size_t section, const Run& run) {
            beginRemoveRows(sectionIndex(section), run.from(), run.to());
            const auto first = sections_[section].begin() + run.from();
            sections_[section].erase(first, first + static_cast<std::ptrdiff_t>(run.count));
            endRemoveRows();
        });
    }
    void changed(const RowChange& change) {
        if (change.kind == RowChange::Kind::reset) {
            rebuild();
            endResetModel();
        } else if (change.kind == RowChange::Kind::inserted) {
            eachRun(change, [this](std::size_t section, const Run& run) {
                beginInsertRows(sectionIndex(section), run.from(), run.to());
                sections_[section].insert(sections_[section].begin() + run.from(), run.count, Row());
                copy(section, run);
                endInsertRows();
            });
        } else if (change.kind == RowChange::Kind::changed) {
            eachRun(change, [this](std::size_t section, const Run& run) {
                copy(section, run);
                const auto above = sectionIndex(section);
                Q_EMIT dataChanged(index(run.from(), 0, above), index(run.to(), 0, above));
            });
        }
    }
    void rebuild() {
        for (auto& section : sections_)
            section.clear();
        for (const auto& each : list_.rows())
            sections_[numberOf(each)].push_back(each);
    }

    ObservableList<Row>& list_;
    SectionOf sectionOf_;
    std::vector<std::vector<Row>> sections_;
    Subscription willChange_, changed_;
};

} // namespace tidwen

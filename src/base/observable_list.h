#pragma once

#include "base/list_change.h"
#include "base/observable.h"

#include <cstddef>
#include <map>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace tidwen {

/// Rows that tell their observers, step by step, how they become others. Belongs to one thread; an observer
/// must not change the list.
///
/// `Row` is compared with `==`; `row.key()` is what tells one row from another while what it shows changes.
template<class Row>
class ObservableList {
  public:
    const std::vector<Row>& rows() const { return rows_; }

    /// Each step is told before and after it is done: the rows are those of the step before, then its own.
    Signal<const RowChange&> willChange;
    Signal<const RowChange&> changed;

    /// Becomes `rows` in as few steps as its observers can follow easily. Keys that are there twice cost a
    /// reset.
    void assign(std::vector<Row> rows) {
        const auto places = newPlaces(rows);
        const auto changes = places ? rowChanges(*places, rows.size()) : std::vector{RowChange{}};
        if (!changes.empty() && changes.front().kind == RowChange::Kind::reset)
            return step({}, [&] { rows_ = std::move(rows); });
        for (const auto& change : changes)
            step(change, [&] { apply(change, rows); });
        replaceChanged(std::move(rows));
    }

    /// Exchanges one row for another with the same key. Does nothing when they are equal.
    void update(std::size_t index, Row row) {
        if (rows_[index] == row) return;
        step({RowChange::Kind::changed, index, 1}, [&] { rows_[index] = std::move(row); });
    }

  private:
    using Place = std::vector<std::optional<std::size_t>>;

    template<class Do>
    void step(const RowChange& change, const Do& apply) {
        willChange.emit(change);
        apply();
        changed.emit(change);
    }

    /// Where each row of now stands in `rows`; nothing when a key is there twice.
    std::optional<Place> newPlaces(const std::vector<Row>& rows) const {
        std::map<std::decay_t<decltype(rows.front().key())>, std::size_t> byKey;
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!byKey.emplace(rows[i].key(), i).second) return std::nullopt;
        Place places;
        places.reserve(rows_.size());
        for (const auto& row : rows_) {
            const auto found = byKey.find(row.key());
            places.push_back(found == byKey.end() ? std::nullopt : std::optional(found->second));
        }
        return places;
    }

    void apply(const RowChange& change, const std::vector<Row>& rows) {
        const auto at = [&](auto& list, std::size_t index) {
            return list.begin() + static_cast<std::ptrdiff_t>(index);
        };
        const auto end = change.first + change.count;
        if (change.kind == RowChange::Kind::removed)
            rows_.erase(at(rows_, change.first), at(rows_, end));
        else // insertions come in order, so their places are already those of the new list
            rows_.insert(at(rows_, change.first), at(rows, change.first), at(rows, end));
    }

    /// The rows are the new ones now, but may show what the old ones did.
    void replaceChanged(std::vector<Row> rows) {
        for (std::size_t first = 0; first < rows.size(); ++first) {
            auto end = first;
            while (end < rows.size() && rows_[end] != rows[end])
                ++end;
            if (end == first) continue;
            step({RowChange::Kind::changed, first, end - first}, [&] {
                for (auto i = first; i < end; ++i)
                    rows_[i] = std::move(rows[i]);
            });
            first = end;
        }
    }

    std::vector<Row> rows_;
};

} // namespace tidwen

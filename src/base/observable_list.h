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

/// Rows that notify observers of each change, step by step. Single thread only; an observer must not change
/// the list.
///
/// `Row` is compared with `==`; `row.key()` identifies a row while its content changes.
template<class Row>
class ObservableList {
  public:
    const std::vector<Row>& rows() const { return rows_; }

    /// Sent before and after each step: the rows are those before the step, then those after it.
    Signal<const RowChange&> willChange;
    Signal<const RowChange&> changed;

    /// Replaces the rows, in as few steps as observers can follow cheaply. Duplicate keys cause a reset.
    void assign(std::vector<Row> rows) {
        const auto steps = stepsBetween(rows_, rows);
        assign(std::move(rows), steps);
    }
    /// The same for a long list, with the steps from its rows to these worked out on another thread.
    void assign(std::vector<Row> rows, const std::vector<RowChange>& steps) {
        if (!steps.empty() && steps.front().kind == RowChange::Kind::reset)
            return step({}, [&] { rows_ = std::move(rows); });
        for (const auto& change : steps)
            step(change, [&] { apply(change, rows); });
        replaceChanged(std::move(rows));
    }
    /// The rows that come and go; any thread.
    static std::vector<RowChange> stepsBetween(const std::vector<Row>& from, const std::vector<Row>& to) {
        const auto places = newPlaces(from, to);
        return places ? rowChanges(*places, to.size()) : std::vector{RowChange{}};
    }

    /// Replaces one row by another with the same key. Does nothing when they are equal.
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

    /// Where each row of `from` stands in `to`; nothing when a key is there twice.
    static std::optional<Place> newPlaces(const std::vector<Row>& from, const std::vector<Row>& to) {
        std::map<std::decay_t<decltype(to.front().key())>, std::size_t> byKey;
        for (std::size_t i = 0; i < to.size(); ++i)
            if (!byKey.emplace(to[i].key(), i).second) return std::nullopt;
        Place places;
        places.reserve(from.size());
        for (const auto& row : from) {
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
        else // insertions come in order, so their indices are already those of the new list
            rows_.insert(at(rows_, change.first), at(rows, change.first), at(rows, end));
    }

    /// The rows are now the new ones but may still have their old content.
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

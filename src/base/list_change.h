#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace tidwen {

/// One step in which a list of rows becomes another, so that a view of it can follow row by row.
struct RowChange {
    enum class Kind {
        reset,    ///< all rows are others; `first` and `count` say nothing
        inserted, ///< rows came: they stand at `first` afterwards
        removed,  ///< rows went: they stood at `first` before
        changed,  ///< rows show something else, in their old place
    };
    Kind kind = Kind::reset;
    std::size_t first = 0;
    std::size_t count = 0;

    friend bool operator==(const RowChange&, const RowChange&) = default;
};

/// More steps than this cost a view more than to start over.
inline constexpr std::size_t mostRowChanges = 200;

/// The removals and insertions that turn a list into another, each counted in the list that the steps before
/// it left; a row that moved is removed and inserted. `newPlaces`: where each old row stands in the new list
/// of `newCount` rows, nothing for one that is gone. One reset when there would be more than
/// `mostRowChanges`.
std::vector<RowChange> rowChanges(const std::vector<std::optional<std::size_t>>& newPlaces,
                                  std::size_t newCount);

} // namespace tidwen

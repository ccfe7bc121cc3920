#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace tidwen {

/// One step in turning a list of rows into another, so that a view can follow row by row.
struct RowChange {
    enum class Kind {
        reset,    ///< all rows are replaced; `first` and `count` are unused
        inserted, ///< rows inserted; `first` is their index afterwards
        removed,  ///< rows removed; `first` was their index before
        changed,  ///< rows with new content at the same index
    };
    Kind kind = Kind::reset;
    std::size_t first = 0;
    std::size_t count = 0;

    friend bool operator==(const RowChange&, const RowChange&) = default;
};

/// With more steps than this, reloading is cheaper for a view.
inline constexpr std::size_t mostRowChanges = 200;

/// The removals and insertions that turn one list into another, each with indices in the list that the
/// previous steps produced; a moved row is removed and inserted. `newPlaces`: the index of each old row in
/// the new list of `newCount` rows, nullopt for a removed row. One reset when there would be more than
/// `mostRowChanges` steps.
std::vector<RowChange> rowChanges(const std::vector<std::optional<std::size_t>>& newPlaces,
                                  std::size_t newCount);

} // namespace tidwen

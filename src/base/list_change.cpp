#include "base/list_change.h"

#include <algorithm>
#include <iterator>

namespace tidwen {

namespace {

/// The old rows that stay: the longest subsequence that is in the same order in both lists.
std::vector<bool> stayingRows(const std::vector<std::optional<std::size_t>>& newPlaces) {
    std::vector<std::size_t> tails; // old rows: the last of each length
    std::vector<std::size_t> previous(newPlaces.size(),
                                      newPlaces.size()); // in the subsequence that ends with a row
    for (std::size_t row = 0; row < newPlaces.size(); ++row) {
        if (!newPlaces[row]) continue;
        const auto isBefore = [&](std::size_t tail, std::size_t place) { return *newPlaces[tail] < place; };
        const auto at = tails.empty() || isBefore(tails.back(), *newPlaces[row]) // most rows keep their order
                            ? tails.end()
                            : std::lower_bound(tails.begin(), tails.end(), *newPlaces[row], isBefore);
        if (at != tails.begin()) previous[row] = *std::prev(at);
        if (at == tails.end())
            tails.push_back(row);
        else
            *at = row;
    }
    std::vector<bool> stays(newPlaces.size(), false);
    for (auto row = tails.empty() ? newPlaces.size() : tails.back(); row < newPlaces.size();
         row = previous[row])
        stays[row] = true;
    return stays;
}

/// The runs of rows for which `isPart` is false, in order.
std::vector<RowChange> gaps(const std::vector<bool>& isPart, RowChange::Kind kind) {
    std::vector<RowChange> found;
    for (std::size_t row = 0; row < isPart.size(); ++row) {
        if (isPart[row]) continue;
        if (row > 0 && !isPart[row - 1])
            ++found.back().count;
        else
            found.push_back({kind, row, 1});
    }
    return found;
}

} // namespace

std::vector<RowChange> rowChanges(const std::vector<std::optional<std::size_t>>& newPlaces,
                                  std::size_t newCount) {
    const auto stays = stayingRows(newPlaces);
    std::vector<bool> isOld(newCount, false);
    for (std::size_t row = 0; row < stays.size(); ++row)
        if (stays[row]) isOld[*newPlaces[row]] = true;

    auto changes = gaps(stays, RowChange::Kind::removed);
    std::reverse(changes.begin(), changes.end()); // from the end, so that the earlier indices stay valid
    const auto insertions = gaps(isOld, RowChange::Kind::inserted);
    changes.insert(changes.end(), insertions.begin(), insertions.end());
    if (changes.size() > mostRowChanges) return {RowChange{}};
    return changes;
}

} // namespace tidwen

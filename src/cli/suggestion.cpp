#include "cli/suggestion.h"

#include "base/text.h"

#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

/// The edit distance: omissions, insertions, replacements and swaps of neighbors.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> before, last, row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        before = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            const bool isSwapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isSwapped) row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row.back();
}

} // namespace

std::optional<std::string> closest(const std::string& word, const std::vector<std::string>& known) {
    constexpr std::size_t longestWord = 64; // longer words are no typing errors
    if (word.size() > longestWord) return std::nullopt;
    const auto wanted = lowercased(word);
    std::optional<std::string> best;
    for (const auto& each : known) // "pt" of "pt-BR"
        if (wanted.size() > 1 && lowercased(each).starts_with(wanted + "-")) return each;
    std::size_t least = wanted.size() < 5 ? 2 : 3; // one more than the allowed differences
    for (const auto& each : known) {
        const auto difference = each.size() > longestWord ? least : distance(wanted, lowercased(each));
        if (difference >= least) continue;
        least = difference;
        best = each;
    }
    return best;
}

} // namespace tidwen

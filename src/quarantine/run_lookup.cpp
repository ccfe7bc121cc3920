#include "quarantine/run_lookup.h"

#include "base/path.h"
#include "base/path_key.h"
#include "base/text.h"

#include <algorithm>
#include <vector>

namespace tidwen {

namespace {

bool isCalledExactly(const Path& root, const std::string& word) {
    return word == root.lastComponent() || Path(word) == root;
}

/// Independent of how the disk spells the folder's name.
bool isCalled(const Path& root, const std::string& word) {
    return fileNameKey(word) == fileNameKey(root.lastComponent()) || pathKey(Path(word)) == pathKey(root);
}

} // namespace

tl::expected<Path, Message> findRun(const PastRuns& runs, const std::string& word) {
    std::vector<Path> roots;
    roots.reserve(runs.entries.size());
    for (const auto& entry : runs.entries)
        roots.push_back(entry.root);
    for (std::size_t i = 0; i < roots.size(); ++i)
        if (word == std::to_string(i + 1)) {
            if (runs.leftOut.empty()) return roots[i];
            const auto count = std::to_string(runs.leftOut.size());
            return tl::unexpected(Message{"history.run.numbersUncertain %lld", {count}});
        }
    for (const auto& run : runs.unfinished)
        roots.push_back(run.root);
    roots.insert(roots.end(), runs.leftOut.begin(), runs.leftOut.end());

    const auto exact =
        std::ranges::find_if(roots, [&](const Path& root) { return isCalledExactly(root, word); });
    if (exact != roots.end()) return *exact;
    std::erase_if(roots, [&](const Path& root) { return !isCalled(root, word); });
    if (roots.empty()) return tl::unexpected(Message{"history.run.unknown %@", {word}});
    if (roots.size() == 1) return roots.front();
    std::string names;
    for (const auto& root : roots)
        names += (names.empty() ? "" : ", ") + root.lastComponent();
    return tl::unexpected(Message{"history.run.ambiguous %@ %@", {word, names}});
}

} // namespace tidwen

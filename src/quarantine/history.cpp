#include "quarantine/history.h"

#include "quarantine/quarantine_layout.h"
#include "scan/residue_scanner.h"

#include <algorithm>
#include <tuple>

namespace tidwen {

namespace {

RemovalHistoryEntry historyEntry(const Path& root, Manifest manifest, const FileSystem& files,
                                 bool includeSize) {
    RemovalHistoryEntry entry{.root = root, .manifest = std::move(manifest)};
    for (const auto& step : entry.manifest.entries) {
        if (step.kind != ManifestEntryKind::move) continue;
        ++entry.totalMoves;
        if (!step.destination) continue;
        const Path item(*step.destination);
        // An undo that was cut off between two devices still has it on its way.
        if (files.exists(item) || files.isSetAside(item)) ++entry.pendingMoves;
    }
    if (includeSize)
        if (const auto size = files.treeSize(root, historySizeEntryLimit))
            entry.sizeBytes = static_cast<std::int64_t>(size->allocatedBytes);
    return entry;
}

} // namespace

std::vector<RemovalHistoryEntry> loadHistory(const UserEnvironment& user, const FileSystem& files,
                                             bool includeSizes) {
    std::vector<RemovalHistoryEntry> entries;
    for (const auto& root : listQuarantineFolders(user, files).value_or(std::vector<Path>{}))
        if (auto manifest = readManifest(root, files))
            entries.push_back(historyEntry(root, std::move(*manifest), files, includeSizes));
    // Runs of one second go by name, so that the numbers people refer to stay the same.
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        return std::tie(a.manifest.createdAt, a.root) > std::tie(b.manifest.createdAt, b.root);
    });
    return entries;
}

} // namespace tidwen

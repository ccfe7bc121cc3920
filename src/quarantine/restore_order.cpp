#include "quarantine/restore_order.h"

#include "base/path.h"

#include <algorithm>
#include <map>

namespace tidwen {

namespace {

using EntriesBySource = std::map<Path, const ManifestEntry*>;

bool canBeRestored(const ManifestEntry& entry) {
    return entry.kind == ManifestEntryKind::move && entry.destination;
}

RestoreStep stepFor(const ManifestEntry& entry, const EntriesBySource& sources) {
    RestoreStep step{.entry = &entry};
    const Path source(entry.source);
    for (Path folder = source.parent(); !folder.isRoot() && folder.isAbsolute(); folder = folder.parent()) {
        const auto outer = sources.find(folder);
        if (outer == sources.end()) continue;
        if (!step.outer) step.outer = outer->second;
        if (outer->second->requiresRoot) step.afterBatch = !entry.requiresRoot;
    }
    return step;
}

} // namespace

std::vector<RestoreStep> restoreOrder(const std::vector<ManifestEntry>& entries) {
    EntriesBySource sources;
    for (const auto& entry : entries)
        if (canBeRestored(entry)) sources.emplace(entry.source, &entry);

    std::vector<RestoreStep> outer;
    std::vector<RestoreStep> nested;
    for (const auto& entry : entries) {
        if (!canBeRestored(entry)) continue;
        const auto step = stepFor(entry, sources);
        (step.outer ? nested : outer).push_back(step);
    }
    std::stable_sort(nested.begin(), nested.end(), [](const RestoreStep& a, const RestoreStep& b) {
        return Path(a.entry->source).components().size() < Path(b.entry->source).components().size();
    });
    outer.insert(outer.end(), nested.begin(), nested.end());
    return outer;
}

} // namespace tidwen

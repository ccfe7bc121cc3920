#include "quarantine/restore_order.h"

#include <algorithm>
#include <map>

namespace tidwen {

namespace {

struct Ancestry {
    bool nested = false;
    bool insideRootItem = false;
};

/// Source → whether it needs an administrator.
using Sources = std::map<Path, bool>;

Ancestry ancestry(const Path& source, const Sources& sources) {
    Ancestry found;
    for (Path folder = source.parent(); !folder.isRoot() && folder.isAbsolute(); folder = folder.parent()) {
        const auto outer = sources.find(folder);
        if (outer == sources.end()) continue;
        found.nested = true;
        found.insideRootItem = found.insideRootItem || outer->second;
    }
    return found;
}

} // namespace

std::vector<RestoreStep> restoreOrder(const std::vector<ManifestEntry>& entries) {
    Sources sources;
    for (const auto& entry : entries)
        if (entry.kind == ManifestEntryKind::move && entry.destination)
            sources[Path(entry.source)] |= entry.requiresRoot;

    std::vector<RestoreStep> outer;
    std::vector<RestoreStep> nested;
    for (const auto& entry : entries) {
        if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        const auto place = ancestry(Path(entry.source), sources);
        auto& list = place.nested ? nested : outer;
        list.push_back({&entry, place.insideRootItem && !entry.requiresRoot});
    }
    std::stable_sort(nested.begin(), nested.end(), [](const RestoreStep& a, const RestoreStep& b) {
        return Path(a.entry->source).components().size() < Path(b.entry->source).components().size();
    });
    outer.insert(outer.end(), nested.begin(), nested.end());
    return outer;
}

} // namespace tidwen

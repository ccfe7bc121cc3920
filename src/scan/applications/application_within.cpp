#include "scan/applications/application_within.h"

#include "platform/file_absence.h"
#include "scan/applications/bundle.h"
#include "scan/applications/bundle_names.h"

#include <utility>
#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t mostFolders = 10'000;
constexpr std::size_t deepest = 6;

/// False for a folder with only the name of a bundle: it may contain applications like any folder.
bool isBundleFolder(const FileSystem& files, const Path& folder) {
    return isBundleName(folder.lastComponent()) && isBundle(files, folder);
}

} // namespace

Searched visitApplicationsWithin(const FileSystem& files, const Path& item, std::size_t& foldersLeft,
                                 const std::function<bool(const Path& application)>& visit,
                                 const StopToken& stop) {
    const auto info = files.info(item);
    if (!info || info->kind != FileKind::directory || isBundleFolder(files, item)) return Searched::whole;
    bool isWhole = true;
    std::vector<std::pair<Path, std::size_t>> folders = {{item, 0}}; // with their depths, shallowest first
    for (std::size_t i = 0; i < folders.size() && !stop.stopRequested(); ++i) {
        if (foldersLeft == 0) return Searched::partly;
        --foldersLeft;
        const auto [folder, depth] = folders[i];
        const auto entries = files.list(folder);
        if (!entries) {
            isWhole = isWhole && isAbsence(entries.error());
            continue;
        }
        for (const auto& entry : *entries) {
            if (entry.kind != FileKind::directory) continue;
            Path inner = folder / entry.name;
            if (isBundleFolder(files, inner)) {
                if (inner.lowercasedExtension() == "app" && visit(inner)) return Searched::whole;
            } else if (depth < deepest && folders.size() < mostFolders) {
                folders.emplace_back(std::move(inner), depth + 1);
            } else {
                isWhole = isWhole && depth >= deepest;
            }
        }
    }
    return isWhole ? Searched::whole : Searched::partly;
}

} // namespace tidwen

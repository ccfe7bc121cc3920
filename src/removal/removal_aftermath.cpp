#include "removal/removal_aftermath.h"

#include "base/path.h"
#include "scan/matching/size_measurer.h"
#include "scan/policy/path_policy.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <unordered_set>
#include <variant>

namespace tidwen {

namespace {

/// Written by the Finder into every folder it shows.
constexpr const char* finderFile = ".DS_Store";

bool isEmptyFolder(const Path& folder, const FileSystem& files) {
    const auto entries = files.list(folder);
    return entries && std::ranges::all_of(*entries, [](const DirectoryEntry& entry) {
               return entry.name == finderFile;
           });
}

} // namespace

std::vector<Path> linksToApplications(const std::vector<RemovalTarget>& chosen, const FileSystem& files,
                                      const UserEnvironment& user) {
    std::set<Path> places;
    for (const auto& target : chosen)
        if (const auto place = files.resolve(target.target.bundleURL); place && takesTheApplication(target))
            places.insert(*place);
    std::vector<Path> links;
    if (places.empty()) return links;
    for (const auto& folder : {Path("/Applications"), user.home / "Applications"}) {
        const auto entries = files.list(folder);
        if (!entries) continue;
        for (const auto& entry : *entries) {
            if (entry.kind != FileKind::symbolicLink) continue;
            const auto place = files.resolve(folder / entry.name);
            if (place && places.contains(*place)) links.push_back(folder / entry.name);
        }
    }
    return links;
}

std::vector<Path> emptiedFolders(const std::vector<RemovalTarget>& chosen, const FileSystem& files,
                                 const UserEnvironment& user) {
    const PathPolicy policy(user, files);
    std::set<Path> folders;
    for (const auto& target : chosen) {
        const Path folder = target.target.bundleURL.standardized().parent();
        if (takesTheApplication(target) && !policy.check(folder) && isEmptyFolder(folder, files))
            folders.insert(folder);
    }
    return {folders.begin(), folders.end()};
}

ByteSum movedBytes(const RemovalReport& report, const FileSystem& files) {
    std::unordered_set<int> succeeded;
    for (const auto& result : report.results)
        if (result.succeeded) succeeded.insert(result.operationID);
    ByteSum sum;
    for (const auto& each : report.operations) {
        const auto* move = std::get_if<operation::Move>(&each.kind);
        if (!move || !succeeded.contains(each.id)) continue;
        if (const auto size = files.treeSize(move->destination, traceSizeEntryLimit))
            sum.add(static_cast<std::int64_t>(size->allocatedBytes), size->capped);
    }
    return sum;
}

} // namespace tidwen

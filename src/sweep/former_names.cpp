#include "sweep/former_names.h"

#include "base/path.h"
#include "base/text.h"
#include "quarantine/manifest.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/launch_item.h"
#include "sweep/orphan_candidates.h"

#include <cstddef>

namespace tidwen {

namespace {

/// Few jobs are ever removed; any program may have written the records.
constexpr std::size_t mostJobs = 1'000;

bool isJob(const ManifestEntry& entry) {
    return entry.kind == ManifestEntryKind::move && entry.destination
           && Path(entry.source).lowercasedExtension() == "plist"
           && Path(entry.source).parent().lastComponent().starts_with("Launch");
}

void add(FormerNames& names, const std::string& identifier, const std::string& name) {
    const auto lower = lowercased(identifier);
    // A name equal to the identifier is none and would hide the one of an older run.
    if (!name.empty() && lowercased(name) != lower && isReverseDns(lower) && isIdentifier(lower))
        names.emplace(lower, name);
}

} // namespace

FormerNames formerNames(const FileSystem& files, const std::vector<RemovalHistoryEntry>& runs) {
    FormerNames names;
    std::size_t jobs = 0;
    for (const auto& run : runs) { // newest first: its names count
        for (const auto& app : run.manifest.apps)
            add(names, app.bundleID, app.name);
        for (const auto& entry : run.manifest.entries) {
            if (!isJob(entry) || ++jobs > mostJobs) continue;
            if (const auto job = readLaunchItem(files, Path(*entry.destination), false))
                add(names, job->label, applicationInPath(job->programPath.value_or("")));
        }
    }
    return names;
}

std::string formerName(const FormerNames& names, const std::string& identifier) {
    const auto found = names.lower_bound(identifier);
    if (found == names.end()) return {};
    return found->first == identifier || found->first.starts_with(identifier + ".") ? found->second : "";
}

} // namespace tidwen

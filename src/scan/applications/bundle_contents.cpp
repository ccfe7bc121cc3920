#include "scan/applications/bundle_contents.h"

#include "base/path.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "scan/applications/bundle.h"
#include "scan/applications/launch_item.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

/// An application or extension without its program, or empty except for its name, is damaged: its signed
/// declarations are unknown.
bool lacksItsProgram(const FileSystem& files, const Bundle& bundle) {
    static constexpr std::array<std::string_view, 3> kinds = {"app", "appex", "xpc"};
    const bool isProgram = std::ranges::find(kinds, bundle.root.lowercasedExtension()) != kinds.end();
    if (!isProgram || !bundle.infoString("CFBundleExecutable")) return false;
    const auto program = files.infoFollowingLinks(bundle.executable());
    return !program || program->kind != FileKind::regular || program->size == 0;
}

void addSigned(BundleContents& contents, const FileSystem& files, const CodeSignatures& signatures,
               const Bundle& bundle) {
    const auto signature = signatures.read(bundle.root, bundle.executable());
    if (signature == CodeSignature{} && lacksItsProgram(files, bundle)) contents.isReadable = false;
    auto& groups = contents.groups;
    for (const auto& group : signature.applicationGroups)
        if (std::find(groups.begin(), groups.end(), group) == groups.end()) groups.push_back(group);
    if (signature.isUnreadable) contents.isReadable = false;
}

void addNames(std::set<std::string>& names, const Bundle& inner) {
    names.insert(inner.root.stem());
    for (const auto* key : {"CFBundleName", "CFBundleDisplayName"})
        if (const auto* name = inner.infoString(key)) names.insert(*name);
}

/// The jobs that it registers while installed. False when some could not be read.
bool addJobs(BundleContents& contents, const FileSystem& files, const Path& library, const StopToken& stop) {
    const auto isThere = files.info(library); // most bundles have none, so one check suffices
    if (!isThere && isAbsence(isThere.error())) return true;
    std::vector<Path> unreadable;
    for (const bool isSystemDomain : {false, true}) {
        const Path folder = library / (isSystemDomain ? "LaunchDaemons" : "LaunchAgents");
        for (auto& job : listLaunchItems(files, folder, isSystemDomain, stop, &unreadable))
            contents.jobs.push_back(std::move(job));
    }
    return unreadable.empty();
}

} // namespace

BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Path& bundle, EmbeddedReach reach, const StopToken& stop) {
    const auto opened = Bundle::open(files, bundle);
    return opened ? readBundleContents(files, signatures, *opened, reach, stop) : BundleContents();
}

BundleContents readBundleContents(const FileSystem& files, const CodeSignatures& signatures,
                                  const Bundle& opened, EmbeddedReach reach, const StopToken& stop) {
    BundleContents contents;
    addSigned(contents, files, signatures, opened);
    std::set<std::string> names;
    auto embedded = findEmbeddedBundles(files, opened, reach, stop, [&](const Bundle& inner) {
        addNames(names, inner);
        addSigned(contents, files, signatures, inner);
    });
    contents.embeddedNames.assign(names.begin(), names.end());
    std::set_union(embedded.identifiers.begin(), embedded.identifiers.end(), embedded.inFrameworks.begin(),
                   embedded.inFrameworks.end(), std::back_inserter(contents.embeddedIDs));
    contents.linkedPlaces = std::move(embedded.linkedPlaces);
    const bool areJobsReadable = addJobs(contents, files, opened.root / "Contents/Library", stop);
    if (opened.isDamaged || !embedded.isReadable || !areJobsReadable) contents.isReadable = false;
    // A bundle that was removed meanwhile may contain more than was seen.
    contents.isComplete = contents.isReadable && embedded.isComplete && opened.identifier()
                          && !stop.stopRequested() && files.exists(opened.infoFile)
                          && !BudgetedFiles::isSpent(files);
    return contents;
}

} // namespace tidwen

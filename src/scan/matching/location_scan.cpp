#include "scan/matching/location_scan.h"

#include "base/parallel.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "platform/file_system.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/container_identity.h"
#include "scan/applications/launch_item.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/trace.h"
#include "scan/policy/location_access.h"
#include "scan/policy/trace_category.h"

#include <string>

namespace tidwen {

namespace {

/// A shared folder ("/opt/homebrew", the home of a user with the application's name, anything in "/usr/bin")
/// may have the target's name by chance, but not its identifier.
bool mayNameOwner(const ScanContext& context, const Path& place, std::string_view component,
                  const MatchReason& reason) {
    const bool isIdentifier =
        reason.kind == MatchReason::Kind::exactBundleID && component.find('.') != component.npos;
    return isIdentifier || !context.policy.check(place);
}

/// Checks the disk only for the few names that could be a bundle's.
bool liesAsBundle(const FileSystem& files, const Path& item) {
    return isBundleName(item.lastComponent())
           && (files.exists(item / "Contents") || files.exists(item / "Info.plist"));
}

/// By the first component of its path that names the target.
std::optional<Attribution> attributeProgram(const ScanContext& context, const Path& program) {
    Path place;
    for (const auto& component : program.components()) {
        if (component == "/") continue;
        place = place / component;
        auto found = context.matcher.attributeIdentifier(component);
        if (!found || !mayNameOwner(context, place, component, found->reason)) continue;
        found->reason.evidence = MatchReason::Evidence::program;
        return found;
    }
    return std::nullopt;
}

/// Another bundle whose identifier is the name of the program or of a folder in its path.
std::optional<Claimant> namedOnTheWay(const ScanContext& context, const Path& program) {
    for (const auto& component : program.components()) {
        if (component.find('.') == component.npos) continue; // no identifier
        if (const auto own = context.matcher.attributeIdentifier(component)) {
            if (own->contestedBy) return own->contestedBy;
        } else if (auto other = context.matcher.others().longestContinued(folded(component))) {
            return other;
        }
    }
    return std::nullopt;
}

/// Another application that the job declares it serves.
std::optional<Claimant> associateOf(const ScanContext& context, const LaunchItem& item) {
    for (const auto& identifier : readAssociatedBundleIDs(context.files, item.plist))
        if (auto other = context.matcher.otherOwnerOf(identifier)) return other;
    return std::nullopt;
}

bool isInTarget(const ScanContext& context, const Path& program) {
    const Path place = program.standardized();
    if (context.targetPlace.isRoot()) return false; // the target is gone
    return place.isWithinIgnoringCase(context.targetPlace)
           || place.isWithinIgnoringCase(context.matcher.target().bundleURL.standardized());
}

} // namespace

std::optional<Claimant> holderOf(const ScanContext& context, const Path& program) {
    const auto& others = context.matcher.others();
    if (auto holder = others.holding(program)) return holder;
    const auto real = context.files.resolve(program);
    return real ? others.holding(*real) : std::nullopt;
}

bool isVendorFolder(const ResidueMatcher& matcher, std::string_view name) {
    if (isBundleName(name)) return false;
    const auto lower = folded(name);
    if (lower == "clouddocs" || isFromApple(lower)) return false;
    if (lower == "caches" || lower == "fileprovider") return true;
    return !matcher.vendor().empty() && canonicalForm(lower).starts_with(matcher.vendor());
}

namespace {

std::optional<Attribution> attributeByNames(const ScanContext& context, const LaunchItem& item) {
    const auto file = item.plist.lastComponent();
    if (context.matcher.isOffLimits(item.label) || context.matcher.isOffLimits(file)) return std::nullopt;
    auto found = context.matcher.attributeIdentifier(item.label);
    if (found) found->reason.evidence = MatchReason::Evidence::label;
    const bool isByLabel = found.has_value();
    // The application after which the job's file is named may rely on it, whatever its present label and
    // program.
    if (found && !found->contestedBy) found->contestedBy = context.matcher.otherOwnerOf(file);
    if (!item.programPath) return found;

    const Path program(*item.programPath);
    const Path real = context.files.resolve(program).value_or(program);
    const bool isEmbedded = isInTarget(context, program) || isInTarget(context, real);
    if (!found && isEmbedded)
        found = Attribution{
            MatchReason{MatchReason::Kind::declaredTarget, {}, MatchReason::Evidence::embedded}, {}};
    if (!found) found = attributeProgram(context, program);
    if (!found && real != program) found = attributeProgram(context, real);
    if (!found || found->contestedBy) return found;
    if (!isByLabel) found->contestedBy = context.matcher.otherOwnerOf(file);
    if (!found->contestedBy && !isByLabel)
        found->contestedBy = context.matcher.others().longestContinued(folded(item.label));
    if (!found->contestedBy) found->contestedBy = holderOf(context, program);
    if (!found->contestedBy && !isEmbedded) found->contestedBy = namedOnTheWay(context, program);
    if (!found->contestedBy && !isEmbedded) found->contestedBy = namedOnTheWay(context, real);
    return found;
}

} // namespace

std::optional<Attribution> attributeJob(const ScanContext& context, const LaunchItem& item) {
    auto found = attributeByNames(context, item);
    if (found && !found->contestedBy) found->contestedBy = associateOf(context, item);
    return found;
}

std::vector<Path> LocationScan::run() {
    const auto access = accessTo(location_.url, context_.files, context_.policy);
    if (access == LocationAccess::closed) miss(location_.url);
    if (access != LocationAccess::open) return std::move(unreadable_);
    auto folder = open(location_.url, context_.files.resolve(location_.url).value_or(location_.url));
    if (!folder) return std::move(unreadable_);

    switch (location_.style) {
    case SearchLocation::Style::launchItemPlists:
        judgeLaunchItems(*folder);
        break;
    case SearchLocation::Style::directChildren:
    case SearchLocation::Style::vendorNestedChildren:
        judgeChildren(*folder);
        break;
    case SearchLocation::Style::containerDirectories:
        judgeContainers(*folder);
        break;
    case SearchLocation::Style::prefixedReports:
        judgeReports(*folder);
        break;
    }
    return std::move(unreadable_);
}

std::optional<LocationScan::Folder> LocationScan::open(const Path& path, const Path& realPath) {
    auto entries = context_.files.list(path);
    if (entries) return Folder{path, realPath, std::move(*entries)};
    if (!isAbsence(entries.error())) miss(path);
    return std::nullopt;
}

void LocationScan::miss(const Path& path) {
    context_.log.warning("Unreadable location {}", path.string());
    unreadable_.push_back(path);
}

void LocationScan::judgeChildren(const Folder& folder) {
    const bool isGroups = location_.url == context_.user.libraryFolder() / "Group Containers";
    const bool hasVendors = location_.style == SearchLocation::Style::vendorNestedChildren;
    for (const auto& entry : folder.entries) {
        if (context_.stop.stopRequested()) return;
        auto found =
            isGroups ? context_.matcher.attributeGroup(entry.name) : context_.matcher.attribute(entry.name);
        if (found)
            take(folder, entry.name, std::move(*found));
        else if (hasVendors && entry.kind == FileKind::directory
                 && isVendorFolder(context_.matcher, entry.name))
            judgeVendorFolder(folder, entry);
    }
}

void LocationScan::judgeVendorFolder(const Folder& parent, const DirectoryEntry& vendor) {
    const auto folder = open(parent.path / vendor.name, parent.realPath / vendor.name);
    if (!folder) return;
    // A folder with another application's name may belong entirely to that application.
    const auto namesake = context_.matcher.others().named(canonicalForm(vendor.name));
    for (const auto& entry : folder->entries) {
        if (context_.stop.stopRequested()) return;
        auto found = context_.matcher.attribute(entry.name);
        if (!found) continue;
        if (!found->contestedBy && found->reason.kind != MatchReason::Kind::exactBundleID)
            found->contestedBy = namesake;
        take(*folder, entry.name, std::move(*found));
    }
}

void LocationScan::judgeContainers(const Folder& folder) {
    std::vector<std::string> identities(folder.entries.size());
    std::vector<unsigned char> areHidden(folder.entries.size()); // not bits: written by several threads
    parallelFor(identities.size(), [&](std::size_t i) {
        const auto& entry = folder.entries[i];
        identities[i] = entry.name;
        if (entry.kind != FileKind::directory || context_.stop.stopRequested()) return;
        const auto owner = containerOwner(context_.files, folder.path / entry.name);
        identities[i] = owner.value_or("");
        areHidden[i] = !owner && hidesItsOwner(context_.files, folder.path / entry.name) ? 1 : 0;
    });
    for (std::size_t i = 0; i < identities.size(); ++i) {
        const auto& name = folder.entries[i].name;
        if (context_.matcher.isOffLimits(name)) continue; // regardless of its metadata
        if (areHidden[i]) miss(folder.path / name);
        auto found = context_.matcher.attribute(identities[i]);
        if (!found) continue;
        if (identities[i] != name) {
            found->reason.evidence = MatchReason::Evidence::record;
            // Any program may write the record; macOS chooses the folder's name.
            if (!found->contestedBy) found->contestedBy = context_.matcher.otherOwnerOf(name);
        }
        take(folder, name, std::move(*found));
    }
}

void LocationScan::judgeReports(const Folder& folder) {
    for (const auto& entry : folder.entries) {
        if (context_.stop.stopRequested()) return;
        const auto end = entry.name.find('_');
        if (entry.kind != FileKind::regular || end == 0 || end == entry.name.npos) continue;
        // macOS names most of them after the executable.
        if (auto found = context_.matcher.attribute(std::string_view(entry.name).substr(0, end)))
            take(folder, entry.name, std::move(*found));
    }
}

void LocationScan::judgeLaunchItems(const Folder& folder) {
    for (const auto& entry : folder.entries) {
        if (context_.stop.stopRequested()) return;
        const Path plist = folder.path / entry.name;
        if (entry.name.starts_with('.') || plist.lowercasedExtension() != "plist") continue;
        const auto item = readLaunchItem(context_.files, plist, location_.isSystemDomain);
        if (!item) {
            const auto* budget = BudgetedFiles::budgetOf(context_.files);
            const bool isLeftOut = budget && budget->isExhausted();
            if (!isLeftOut && isUnreadableJob(context_.files, plist)) miss(plist);
            continue;
        }
        auto found = attributeJob(context_, *item);
        if (!found) continue;
        auto trace = makeTrace(TraceCategory::launchItems,
                               action::BootoutAndMove{item->label, plist, location_.isSystemDomain},
                               std::move(found->reason), Reversibility::reversible, plist.string(),
                               std::nullopt, location_.requiresRoot || item->isSystemDomain);
        trace.contestedBy = std::move(found->contestedBy);
        traces_.addFound(std::move(trace), folder.realPath);
    }
}

void LocationScan::take(const Folder& folder, std::string_view name, Attribution attribution) {
    const Path path = folder.path / name;
    const bool isBundle = liesAsBundle(context_.files, path);
    if (isBundle && !context_.matcher.mayClaimBundle(name)) return;
    auto trace = makeTrace(location_.category, action::MovePath{path}, std::move(attribution.reason),
                           Reversibility::reversible, path.string(), std::nullopt, location_.requiresRoot);
    trace.contestedBy = std::move(attribution.contestedBy);
    if (!trace.contestedBy && isBundle) trace.contestedBy = context_.held.bundleAt(folder.realPath / name);
    if (!trace.contestedBy) context_.held.mark(trace, path, folder.realPath / name);
    traces_.addFound(std::move(trace), folder.realPath);
}

} // namespace tidwen

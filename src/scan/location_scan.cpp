#include "scan/location_scan.h"

#include "base/parallel.h"
#include "base/text.h"
#include "scan/bundle_names.h"
#include "scan/container_identity.h"

namespace tidwen {

bool LocationScan::run() {
    bool isUnreadable = false;
    auto folder = open(location_.url, location_.url, isUnreadable);
    if (isUnreadable) context_.log.warning("Unreadable location {}", location_.url.string());
    if (!folder) return !isUnreadable;
    if (auto real = context_.files.resolve(location_.url)) folder->realPath = std::move(*real);

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
    return true;
}

std::optional<LocationScan::Folder> LocationScan::open(const Path& path, const Path& realPath,
                                                       bool& isUnreadable) const {
    auto entries = context_.files.list(path);
    if (entries) return Folder{path, realPath, std::move(*entries)};
    const auto fault = entries.error().fault;
    isUnreadable = fault != FileFault::missing && fault != FileFault::notDirectory
                   && fault != FileFault::throughLink; // a link to itself
    return std::nullopt;
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
        else if (hasVendors && isVendorFolder(entry))
            judgeVendorFolder(folder, entry);
    }
}

/// A vendor's folder holds one folder for each of its applications; a shared store one for each application.
bool LocationScan::isVendorFolder(const DirectoryEntry& entry) const {
    if (entry.kind != FileKind::directory || isBundleName(entry.name)) return false;
    const auto lower = lowercased(composed(entry.name));
    if (lower == "clouddocs" || lower.starts_with("com.apple.")) return false;
    if (lower == "caches" || lower == "fileprovider") return true;
    const auto& vendor = context_.matcher.vendor();
    return !vendor.empty() && canonicalForm(lower).starts_with(vendor);
}

void LocationScan::judgeVendorFolder(const Folder& parent, const DirectoryEntry& vendor) {
    bool isUnreadable = false;
    const auto folder = open(parent.path / vendor.name, parent.realPath / vendor.name, isUnreadable);
    if (isUnreadable) context_.log.warning("Unreadable folder {}", (parent.path / vendor.name).string());
    if (!folder) return;
    // Named like another application, the whole folder may be that application's.
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
    parallelFor(identities.size(), [&](std::size_t i) {
        const auto& entry = folder.entries[i];
        identities[i] = entry.name;
        if (entry.kind != FileKind::directory || context_.stop.stopRequested()) return;
        identities[i] = containerOwner(context_.files, folder.path / entry.name).value_or("");
    });
    for (std::size_t i = 0; i < identities.size(); ++i) {
        const auto& name = folder.entries[i].name;
        if (context_.matcher.isOffLimits(name)) continue; // whatever its metadata says
        if (auto found = context_.matcher.attribute(identities[i])) take(folder, name, std::move(*found));
    }
}

void LocationScan::judgeReports(const Folder& folder) {
    for (const auto& entry : folder.entries) {
        if (context_.stop.stopRequested()) return;
        const auto end = entry.name.find('_');
        if (entry.kind != FileKind::regular || end == 0 || end == entry.name.npos) continue;
        if (auto found = context_.matcher.attributeIdentifier(std::string_view(entry.name).substr(0, end)))
            take(folder, entry.name, std::move(*found));
    }
}

void LocationScan::judgeLaunchItems(const Folder& folder) {
    for (const auto& entry : folder.entries) {
        if (context_.stop.stopRequested()) return;
        const Path plist = folder.path / entry.name;
        if (entry.name.starts_with('.') || plist.lowercasedExtension() != "plist") continue;
        const auto item = readLaunchItem(context_.files, plist, location_.isSystemDomain);
        if (!item) continue;
        auto found = attributeJob(*item);
        if (!found) continue;
        auto trace = makeTrace(TraceCategory::launchItems,
                               action::BootoutAndMove{item->label, plist, location_.isSystemDomain},
                               std::move(found->reason), Reversibility::reversible, plist.string(),
                               std::nullopt, location_.requiresRoot);
        trace.contestedBy = std::move(found->contestedBy);
        traces_.addFound(std::move(trace), folder.realPath);
    }
}

std::optional<Attribution> LocationScan::attributeJob(const LaunchItem& item) const {
    if (auto found = context_.matcher.attributeIdentifier(item.label)) return found;
    if (!item.programPath || context_.matcher.isOffLimits(item.label)) return std::nullopt;
    const Path program(*item.programPath);
    Path place;
    for (const auto& component : program.components()) {
        if (component == "/") continue;
        place = place / component;
        auto found = context_.matcher.attributeIdentifier(component);
        if (!found || !mayNameOwner(place, component, found->reason)) continue;
        const auto& others = context_.matcher.others();
        if (!found->contestedBy)
            found->contestedBy = others.longestContinued(lowercased(composed(item.label)));
        if (!found->contestedBy) found->contestedBy = others.holding(program);
        return found;
    }
    return std::nullopt;
}

/// A folder that everybody shares ("/opt/homebrew", the home of a user called like the application, what is
/// in "/usr/bin") may bear the target's name by chance; an identifier it does not.
bool LocationScan::mayNameOwner(const Path& place, std::string_view component,
                                const MatchReason& reason) const {
    const bool isIdentifier =
        reason.kind == MatchReason::Kind::exactBundleID && component.find('.') != component.npos;
    return isIdentifier || !context_.policy.check(place);
}

void LocationScan::take(const Folder& folder, std::string_view name, Attribution attribution) {
    const Path path = folder.path / name;
    auto trace = makeTrace(location_.category, action::MovePath{path}, std::move(attribution.reason),
                           Reversibility::reversible, path.string(), std::nullopt, location_.requiresRoot);
    trace.contestedBy = std::move(attribution.contestedBy);
    traces_.addFound(std::move(trace), folder.realPath);
}

} // namespace tidwen

#include "sweep/orphan_candidates.h"

#include "base/path.h"
#include "base/text.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/container_identity.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/launch_item.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/residue_matcher.h"
#include "scan/policy/trace_category.h"
#include "sweep/known_owners.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tidwen {
namespace {

using Style = SearchLocation::Style;

/// Where applications store folders and files under their own names. Elsewhere (fonts, plug-ins, temporary
/// files) a name is weaker evidence.
bool isForNames(const SearchLocation& location) {
    if (location.style == Style::vendorNestedChildren || location.style == Style::prefixedReports)
        return true;
    const bool isOfKind = location.category == TraceCategory::caches
                          || location.category == TraceCategory::logs
                          || location.category == TraceCategory::preferences;
    const auto parent = location.url.parent().lastComponent();
    return isOfKind && location.style == Style::directChildren
           && (parent == "Library" || parent == "Preferences");
}

bool isMadeByMacOS(const SearchLocation& location) {
    constexpr std::array folders = {"Saved Application State", "HTTPStorages", "WebKit",
                                    "Application Scripts"};
    const auto folder = location.url.lastComponent();
    return location.style == Style::containerDirectories
           || std::find(folders.begin(), folders.end(), folder) != folders.end();
}

/// "Marlin Notes" of "Marlin Notes.plist" and "Marlin Notes.log".
std::string_view nameIn(std::string_view entry) {
    constexpr std::string_view log = ".log";
    if (entry.ends_with(log)) entry.remove_suffix(log.size());
    return withoutWrappingExtension(entry);
}

/// "Marlin Notes" of "Marlin Notes_2026-11-21-101112_mac.crash", "Marlin Notes-2026-11-21-101112.ips" and
/// "Marlin Notes_<identifier of the machine>.plist". Empty when the name has no such form.
std::string_view subjectOfReport(std::string_view entry) {
    if (const auto end = entry.find('_'); end != entry.npos) return entry.substr(0, end);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    constexpr std::string_view form = "-dddd-dd-dd";
    for (std::size_t at = entry.find('-'); at != entry.npos; at = entry.find('-', at + 1)) {
        const auto date = entry.substr(at, form.size());
        if (std::equal(date.begin(), date.end(), form.begin(), form.end(),
                       [&](char c, char wanted) { return wanted == 'd' ? isDigit(c) : c == wanted; }))
            return entry.substr(0, at);
    }
    return {};
}

class LocationReader {
  public:
    LocationReader(const FileSystem& files, const SearchLocation& location, std::vector<Path>& skippedNames,
                   const StopToken& stop)
        : files_(files),
          location_(location),
          skippedNames_(skippedNames),
          stop_(stop),
          isForNames_(isForNames(location)) {
        found_.isMadeByMacOS = isMadeByMacOS(location);
    }

    std::optional<LocationCandidates> read() {
        const auto entries = files_.list(location_.url);
        if (!entries) {
            const auto fault = entries.error().fault;
            const bool isAbsent = fault == FileFault::missing || fault == FileFault::notDirectory
                                  || fault == FileFault::throughLink;
            return isAbsent ? std::optional(std::move(found_)) : std::nullopt;
        }
        for (const auto& entry : *entries) {
            if (stop_.stopRequested()) break;
            if (isValidUtf8(entry.name))
                judge(entry);
            else
                skippedNames_.push_back(location_.url / entry.name);
        }
        return std::move(found_);
    }

  private:
    void judge(const DirectoryEntry& entry) {
        const Path path = location_.url / entry.name;
        switch (location_.style) {
        case Style::launchItemPlists:
            return judgeJob(entry.name, path);
        case Style::containerDirectories:
            return judgeContainer(entry, path);
        case Style::prefixedReports:
            return judgeReport(entry, path);
        case Style::directChildren:
            addChild(entry.name, path);
            return;
        case Style::vendorNestedChildren:
            if (!addChild(entry.name, path)) judgeVendor(entry, path);
            return;
        }
    }

    void add(std::string identifier, const Path& path, std::string folder = {}, std::string alias = {}) {
        if (identifier.empty()) return;
        found_.identified.push_back({std::move(identifier),
                                     {},
                                     std::move(folder),
                                     std::move(alias),
                                     location_.category,
                                     action::MovePath{path},
                                     location_.requiresRoot});
    }

    /// The identifier by which a find of this name is claimed. A scan looks for nothing by one that ends like
    /// the name of a file, so the sweep claims nothing by it; but many packages are named so.
    std::string claimed(std::string_view name) const {
        auto identifier = identifierInName(name);
        const bool counts = location_.category == TraceCategory::receipts || isIdentifier(identifier);
        return counts ? identifier : std::string();
    }

    /// By the identifier in its name, else by the name itself. False without an identifier.
    bool addChild(const std::string& entry, const Path& path) {
        if (auto identifier = claimed(entry); !identifier.empty())
            return add(std::move(identifier), path), true;
        addLoose(looseIdentifierInName(entry), path);
        return addNamed(nameIn(entry), path), false;
    }

    void addLoose(std::string identifier, const Path& path, std::string alias = {}) {
        if (identifier.empty()) return;
        found_.loose.push_back({std::move(identifier),
                                {},
                                {},
                                std::move(alias),
                                location_.category,
                                action::MovePath{path},
                                location_.requiresRoot});
    }

    void addNamed(std::string_view name, const Path& path) {
        if (isForNames_ && !isBundleName(name) && isTellingName(canonicalForm(name)))
            found_.named.push_back({std::string(name), location_.category, path, location_.requiresRoot});
    }

    void judgeJob(const std::string& name, const Path& plist) {
        if (name.starts_with('.') || plist.lowercasedExtension() != "plist") return;
        const auto job = readLaunchItem(files_, plist, location_.isSystemDomain);
        auto identifier = job ? lowercased(job->label) : std::string();
        if (!isReverseDns(identifier) || !isIdentifier(identifier)) return;
        found_.identified.push_back({std::move(identifier),
                                     applicationInPath(job->programPath.value_or("")),
                                     {},
                                     {},
                                     location_.category,
                                     action::BootoutAndMove{job->label, plist, location_.isSystemDomain},
                                     location_.requiresRoot});
    }

    void judgeContainer(const DirectoryEntry& entry, const Path& path) {
        if (entry.kind != FileKind::directory || isApplesIdentifier(lowercased(entry.name))) return;
        const auto owner = containerOwner(files_, path);
        if (!owner) {
            if (hidesItsOwner(files_, path)) found_.ownerless.push_back(path);
            return;
        }
        auto identifier = claimed(*owner), called = identifierInName(entry.name);
        if (called == identifier) called.clear();
        if (identifier.empty())
            addLoose(looseIdentifierInName(*owner), path, std::move(called));
        else
            add(std::move(identifier), path, {}, std::move(called));
    }

    void judgeReport(const DirectoryEntry& entry, const Path& path) {
        const auto subject = subjectOfReport(entry.name);
        if (entry.kind != FileKind::regular || subject.empty()) return;
        if (auto identifier = claimed(subject); !identifier.empty())
            add(std::move(identifier), path);
        else
            addNamed(subject, path);
    }

    /// A plain folder without an identifier may be a vendor's; only its children with an identifier are
    /// considered.
    void judgeVendor(const DirectoryEntry& entry, const Path& path) {
        const auto lower = lowercased(entry.name);
        if (entry.kind != FileKind::directory || isBundleName(entry.name) || isFromApple(entry.name)
            || lower == "clouddocs")
            return;
        const auto children = files_.list(path);
        if (!children) return;
        for (const auto& child : *children)
            if (isValidUtf8(child.name)) add(claimed(child.name), path / child.name, entry.name);
    }

    const FileSystem& files_;
    const SearchLocation& location_;
    std::vector<Path>& skippedNames_;
    const StopToken& stop_;
    const bool isForNames_;
    LocationCandidates found_;
};

} // namespace

std::string applicationInPath(const std::string& program) {
    for (const auto& component : Path(program).components())
        if (const Path part = Path("/") / component; part.lowercasedExtension() == "app") return part.stem();
    return {};
}

std::optional<LocationCandidates> listOrphanCandidates(const FileSystem& files,
                                                       const SearchLocation& location,
                                                       std::vector<Path>& skippedNames,
                                                       const StopToken& stop) {
    return LocationReader(files, location, skippedNames, stop).read();
}

} // namespace tidwen

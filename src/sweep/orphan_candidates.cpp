#include "sweep/orphan_candidates.h"

#include "base/text.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/container_identity.h"
#include "scan/applications/launch_item.h"
#include "scan/matching/shared_names.h"
#include "sweep/known_owners.h"

namespace tidwen {
namespace {

using Style = SearchLocation::Style;

/// "Marlin Notes" of "/Applications/Marlin Notes.app/Contents/MacOS/agent".
std::string applicationInPath(const std::string& program) {
    for (const auto& component : Path(program).components())
        if (const Path part = Path("/") / component; part.lowercasedExtension() == "app") return part.stem();
    return {};
}

class LocationReader {
  public:
    LocationReader(const FileSystem& files, const SearchLocation& location, std::vector<Path>& skippedNames,
                   const StopToken& stop)
        : files_(files), location_(location), skippedNames_(skippedNames), stop_(stop) {}

    std::optional<std::vector<OrphanCandidate>> read() {
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
            return add(identifierInName(entry.name), path);
        case Style::vendorNestedChildren:
            if (auto identifier = identifierInName(entry.name); !identifier.empty())
                return add(std::move(identifier), path);
            return judgeVendor(entry, path);
        }
    }

    void add(std::string identifier, const Path& path, std::string folder = {}, std::string alias = {}) {
        if (identifier.empty()) return;
        found_.push_back({std::move(identifier),
                          {},
                          std::move(folder),
                          std::move(alias),
                          location_.category,
                          action::MovePath{path},
                          location_.requiresRoot});
    }

    void judgeJob(const std::string& name, const Path& plist) {
        if (name.starts_with('.') || plist.lowercasedExtension() != "plist") return;
        const auto job = readLaunchItem(files_, plist, location_.isSystemDomain);
        auto identifier = job ? lowercased(job->label) : std::string();
        if (!isReverseDns(identifier)) return;
        found_.push_back({std::move(identifier),
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
        if (!owner) return;
        auto identifier = identifierInName(*owner), called = identifierInName(entry.name);
        if (called == identifier) called.clear();
        add(std::move(identifier), path, {}, std::move(called));
    }

    void judgeReport(const DirectoryEntry& entry, const Path& path) {
        const auto end = entry.name.find('_');
        if (entry.kind == FileKind::regular && end != entry.name.npos && end > 0)
            add(identifierInName(entry.name.substr(0, end)), path);
    }

    /// A plain folder without an identifier of its own may be a vendor's; only what carries one is looked at
    /// in it.
    void judgeVendor(const DirectoryEntry& entry, const Path& path) {
        const auto lower = lowercased(entry.name);
        if (entry.kind != FileKind::directory || isBundleName(entry.name) || lower.starts_with("com.apple.")
            || lower == "clouddocs")
            return;
        const auto children = files_.list(path);
        if (!children) return;
        for (const auto& child : *children)
            if (isValidUtf8(child.name)) add(identifierInName(child.name), path / child.name, entry.name);
    }

    const FileSystem& files_;
    const SearchLocation& location_;
    std::vector<Path>& skippedNames_;
    const StopToken& stop_;
    std::vector<OrphanCandidate> found_;
};

} // namespace

std::optional<std::vector<OrphanCandidate>> listOrphanCandidates(const FileSystem& files,
                                                                 const SearchLocation& location,
                                                                 std::vector<Path>& skippedNames,
                                                                 const StopToken& stop) {
    return LocationReader(files, location, skippedNames, stop).read();
}

} // namespace tidwen

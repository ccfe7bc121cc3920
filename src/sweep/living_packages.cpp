#include "sweep/living_packages.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/file_absence.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/job_program.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"
#include "sweep/known_owners.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace tidwen {
namespace {

// A Mac has some hundred packages; more of them, or endless lists, are not read to the end, and what was not
// read counts as in use.
constexpr std::size_t mostPackages = 2'000;
constexpr std::size_t mostLooks = 200'000;

/// It exists but cannot be listed.
bool isClosed(const FileSystem& files, const Path& folder) {
    const auto entries = files.list(folder);
    return !entries && !isAbsence(entries.error());
}

class PackageJudge {
  public:
    PackageJudge(const FileSystem& files, const UserEnvironment& user)
        : files_(files), programs_(files), locations_(searchLocations(user)) {}

    enum class Life { living, lost, neither };

    Life judge(const Receipt& receipt) {
        const auto identifier = lowercased(receipt.packageID);
        bool lostApplication = false, hasLeftover = false;
        Path application;
        for (const auto& file : receipt.files) {
            if (looksLeft_ == 0) return Life::living;
            const Path path = (receipt.installBase / file).standardized();
            if (const auto owner = applicationAround(path)) {
                if (*owner == application) continue; // one lookup for all its files
                application = *owner;
                if (isThere(application, FileKind::directory)) return Life::living;
                lostApplication = true;
            } else if (isThere(path, FileKind::regular)) {
                if (!isOwnLeftover(path, identifier)) return Life::living;
                hasLeftover = true;
            }
        }
        if (hasLeftover) return lostApplication ? Life::neither : Life::living;
        return lostApplication ? Life::lost : Life::neither;
    }

  private:
    /// What cannot be inspected may exist, and so may the target of a link; but "/etc", "/tmp" and "/var" are
    /// links of macOS itself.
    bool isThere(const Path& path, FileKind kind) {
        --looksLeft_;
        const auto info = files_.info(path);
        if (info)
            return info->kind == kind || (info->kind == FileKind::symbolicLink && !path.parent().isRoot());
        return !isAbsence(info.error()) || mayBeElsewhere(path);
    }

    /// As for the program of a job, what lies where this disk has nothing is not known to be gone.
    bool mayBeElsewhere(const Path& path) {
        const Path folder = path.parent();
        if (goneFolders_.contains(folder)) return false;
        if (programs_.find(path.string()) != JobProgram::gone) return true;
        if (!mayBeThere(files_, folder)) goneFolders_.insert(folder);
        return false;
    }

    static std::optional<Path> applicationAround(const Path& path) {
        Path outer("/");
        for (const auto& component : path.components())
            if (outer = outer / component; outer.lowercasedExtension() == "app") return outer;
        return std::nullopt;
    }

    /// The sweep itself would find it by the package's identifier: it is an ordinary leftover of an
    /// application dragged to the Trash. Bundles and privileged tools work without their application.
    bool isOwnLeftover(const Path& path, std::string_view identifier) const {
        const auto parts = path.components();
        if (std::any_of(parts.begin(), parts.end(), isBundleName)
            || path.isWithinIgnoringCase(Path("/Library/PrivilegedHelperTools")))
            return false;
        return std::any_of(locations_.begin(), locations_.end(), [&](const SearchLocation& location) {
            const auto depth = location.url.components().size();
            if (parts.size() <= depth || !path.isWithinIgnoringCase(location.url)) return false;
            auto found = identifierInName(parts[depth]);
            if (found.empty() && location.style == SearchLocation::Style::vendorNestedChildren
                && parts.size() > depth + 1)
                found = identifierInName(parts[depth + 1]);
            return !found.empty()
                   && (continuesIdentifier(found, identifier) || continuesIdentifier(identifier, found));
        });
    }

    const FileSystem& files_;
    JobPrograms programs_;
    std::set<Path> goneFolders_;
    std::vector<SearchLocation> locations_;
    std::size_t looksLeft_ = mostLooks;
};

} // namespace

LivingPackages listLivingPackages(const FileSystem& files, const Receipts& receipts,
                                  const UserEnvironment& user, const KnownOwners& installed,
                                  const StopToken& stop) {
    using Life = PackageJudge::Life;
    LivingPackages packages;
    for (const auto& location : searchLocations(user))
        if (location.category == TraceCategory::receipts && isClosed(files, location.url))
            packages.unreadable.push_back(location.url);
    PackageJudge judge(files, user);
    std::size_t packagesLeft = mostPackages;
    for (const auto& packageID : receipts.packageIDs()) {
        if (stop.stopRequested()) break;
        auto identifier = lowercased(packageID);
        if (installed.claims(identifier)) continue;
        auto life = Life::living;
        if (packagesLeft > 0) {
            --packagesLeft;
            const auto receipt = receipts.read(packageID);
            if (receipt && !receipt->unreadableList) life = judge.judge(*receipt);
            if (receipt && receipt->unreadableList) {
                const auto& list = *receipt->unreadableList;
                if (!mayBeThere(files, list)) {
                    packages.unlisted.emplace(std::move(identifier), list.parent() / (packageID + ".plist"));
                    continue;
                }
                packages.unreadable.push_back(list);
            }
        }
        if (life == Life::living)
            packages.identifiers.push_back(std::move(identifier));
        else if (life == Life::lost)
            packages.lost.insert(std::move(identifier));
    }
    return packages;
}

} // namespace tidwen

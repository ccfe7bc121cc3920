#include "sweep/living_packages.h"

#include "base/text.h"
#include "scan/bundle_names.h"
#include "scan/search_location.h"
#include "sweep/known_owners.h"

#include <algorithm>
#include <optional>

namespace tidwen {
namespace {

// A Mac has some hundred packages; the receipts of one that has more, or list without end, are not read to
// theirs, and what was not read lives.
constexpr std::size_t mostPackages = 2'000;
constexpr std::size_t mostLooks = 200'000;

class PackageJudge {
  public:
    PackageJudge(const FileSystem& files, const UserEnvironment& user)
        : files_(files), locations_(searchLocations(user)) {}

    bool lives(const Receipt& receipt) {
        bool lostApplication = false, hasLeftover = false;
        Path application;
        for (const auto& file : receipt.files) {
            if (looksLeft_ == 0) return true;
            const Path path = (receipt.installBase / file).standardized();
            if (const auto owner = applicationAround(path)) {
                if (*owner == application) continue; // one look for all its files
                application = *owner;
                if (isThere(application, FileKind::directory)) return true;
                lostApplication = true;
            } else if (isThere(path, FileKind::regular)) {
                if (!isLeftover(path)) return true;
                hasLeftover = true;
            }
        }
        return hasLeftover && !lostApplication;
    }

  private:
    /// What cannot be looked at may be there.
    bool isThere(const Path& path, FileKind kind) {
        --looksLeft_;
        const auto info = files_.infoFollowingLinks(path);
        if (info) return info->kind == kind;
        return info.error().fault != FileFault::missing && info.error().fault != FileFault::notDirectory;
    }

    static std::optional<Path> applicationAround(const Path& path) {
        Path outer("/");
        for (const auto& component : path.components())
            if (outer = outer / component; outer.lowercasedExtension() == "app") return outer;
        return std::nullopt;
    }

    /// Nothing else than what any application leaves behind when it is dragged away.
    bool isLeftover(const Path& path) const {
        const auto parts = path.components();
        return std::none_of(parts.begin(), parts.end(), isBundleName)
               && std::any_of(locations_.begin(), locations_.end(), [&](const SearchLocation& location) {
                      return path.isWithinIgnoringCase(location.url);
                  });
    }

    const FileSystem& files_;
    std::vector<SearchLocation> locations_;
    std::size_t looksLeft_ = mostLooks;
};

} // namespace

std::vector<std::string> listLivingPackages(const FileSystem& files, const Receipts& receipts,
                                            const UserEnvironment& user, const KnownOwners& installed,
                                            const StopToken& stop) {
    std::vector<std::string> living;
    PackageJudge judge(files, user);
    std::size_t packagesLeft = mostPackages;
    for (const auto& packageID : receipts.packageIDs()) {
        if (stop.stopRequested()) break;
        auto identifier = lowercased(packageID);
        if (installed.claims(identifier)) continue;
        if (packagesLeft > 0) {
            --packagesLeft;
            const auto receipt = receipts.read(packageID);
            if (!receipt || !judge.lives(*receipt)) continue;
        }
        living.push_back(std::move(identifier));
    }
    return living;
}

} // namespace tidwen

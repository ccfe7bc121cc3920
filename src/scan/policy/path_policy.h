#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace tidwen {

/// A move that the policy allows, with the real paths of both ends: the links of both parents are resolved as
/// far as they exist. A move along these paths without following links cannot be redirected afterwards. Only
/// `PathPolicy` creates one.
class JudgedMove {
  public:
    const Path& source() const { return source_; }
    const Path& destination() const { return destination_; }

  private:
    friend class PathPolicy;
    JudgedMove(Path source, Path destination)
        : source_(std::move(source)), destination_(std::move(destination)) {}

    Path source_, destination_;
};

/// The last check before anything is moved. Refuses shallow paths, the user's own folders, the homes of
/// others, everything of the system, paths redirected by ".." or a link, and whatever contains one of these
/// places, which would move with it. A place that is reached through a link is also protected at its real
/// location. Compares whole components as Mac file systems do: letter case and Unicode normalization are
/// ignored. Immutable; thread-safe.
class PathPolicy {
  public:
    enum class ViolationKind { traversal, missingQuarantineEndpoint, tooShallow, deniedExact, neverTouch };

    struct Violation {
        ViolationKind kind = ViolationKind::neverTouch;
        std::string path;
        friend bool operator==(const Violation&, const Violation&) = default;
    };

    /// Resolves the home and the protected places now, some hundred paths and fifty for each other home, and
    /// never again: this keeps checks cheap, and replacing the home by a link to another home during a run
    /// does not make that one the user's.
    PathPolicy(const UserEnvironment& user, const FileSystem& files);

    /// Checks one path that is to be moved away. Looks only at the text: a path through links must also be
    /// checked with links resolved.
    std::optional<Violation> check(const Path& url, bool allowsInstallerInDownloads = false) const;

    /// Checks a move between a real place and the quarantine, in either direction. Resolves links of both
    /// parents through `files` and checks their targets too; parents that do not exist yet are judged by the
    /// nearest existing one. On a case-sensitive disk, a folder beside the user's home whose name differs
    /// only in letter case is not the home.
    tl::expected<JudgedMove, Violation> checkMove(const Path& source, const Path& destination,
                                                  const FileSystem& files) const;

    /// An item in a quarantine folder: below "<home>/.Trash/Tidwen - …", not that folder itself.
    bool isQuarantineEndpoint(const Path& url) const;
    /// A disk image or package directly in the user's Downloads.
    bool isInstallerInDownloads(const Path& url) const;

    /// The path is a place that must not be moved, or a folder that contains the real location of one.
    /// Compares text; inside a quarantine folder nothing else is protected.
    bool holdsProtectedPlace(const Path& url) const;

    /// An item in the home of another user: a folder of "/Users" other than the user's home and "Shared", the
    /// target of a link there, a folder of another place for homes, or a home that an account names; also the
    /// targets of the standard folders of such a home, from "Documents" to "Library/Preferences", and of any
    /// link directly in it or in its "Library". Such places are never touched.
    bool isInAnotherHome(const Path& url) const;

    /// The item may be such a target all the same: "/Users" holds more than five hundred homes, or they hold
    /// more than two thousand links, so not all were followed.
    bool mayBeInAnotherHome(const Path& url) const;

  private:
    class RealPlaces;
    using Components = std::vector<std::string>; ///< each as returned by `fileNameKey`

    struct NeverTouchRule {
        Components prefix = {};
        std::vector<Components> exceptions = {};
        bool isDownloads = false; ///< installers may be moved out of it
        friend bool operator==(const NeverTouchRule&, const NeverTouchRule&) = default;
    };

    // Each of these protects a place as written and at its real location.
    void keepSharedPlaces(RealPlaces& places);
    void keepHomeFolders(const Path& home, RealPlaces& places);
    void keepOtherHomes(RealPlaces& places);
    void keepItself(const Path& place, RealPlaces& places);
    /// `rule` without its prefix.
    void keepWhole(const Path& place, NeverTouchRule rule, RealPlaces& places);
    void keepOtherHome(const Path& home, RealPlaces& places);
    void keepFoldersOf(const Path& otherHome, RealPlaces& places);
    void keepLinkedFromHome(const Path& folder, RealPlaces& places);
    bool isInAHome(const Components& place) const;
    /// False when it is shared or the user's own, and therefore not protected.
    bool keepOthers(const Path& place);

    /// Protects the place and every folder that contains it.
    void deny(Components place);
    bool holdsTheHome(const Components& place) const;
    /// Whether its name has the key of the user's home although the disk keeps them apart.
    bool isBesideTheHome(const Path& path, const FileSystem& files) const;
    bool isInAnotherHome(const Components& path) const;

    UserEnvironment user_;
    std::vector<Components> homes_;                    ///< all spellings of the user's home
    std::vector<Components> downloads_;                ///< and of its Downloads
    std::vector<Components> usersFolders_;             ///< all spellings of "/Users"
    std::vector<Components> otherHomes_;               ///< of other users, and folders in such homes
    bool knowsAllHomes_ = true, knowsAllLinks_ = true; ///< of others
    std::set<Components> deniedExact_;
    std::vector<NeverTouchRule> neverTouch_;
};

/// The text shown for every violation.
inline constexpr const char* blockedBySafetyPolicyKey = "failure.blockedBySafetyPolicy";

/// The prefix of every quarantine folder's name.
inline constexpr const char* quarantineFolderPrefix = "Tidwen - ";

} // namespace tidwen

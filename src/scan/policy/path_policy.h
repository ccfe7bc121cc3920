#pragma once

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

/// A move that the policy allows, from and to where the items really lie: the links of both parents are
/// resolved as far as these exist. Moved along these paths, without following links, nothing can lead it
/// elsewhere afterwards. Only `PathPolicy` makes one.
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

/// The last line of defence before anything moves: refuses shallow paths, the user's own folders, the homes
/// of others, what belongs to the system, every path that leads elsewhere through ".." or a link, and what
/// holds one of these places, which would move with it. A place that is reached through a link is protected
/// where it really lies, too. Compares whole components as a Mac's disks do: letter case and the way accents
/// are composed do not count. Immutable; may be used from any thread.
class PathPolicy {
  public:
    enum class ViolationKind { traversal, missingQuarantineEndpoint, tooShallow, deniedExact, neverTouch };

    struct Violation {
        ViolationKind kind = ViolationKind::neverTouch;
        std::string path;
        friend bool operator==(const Violation&, const Violation&) = default;
    };

    /// Where the home and the protected places lead is looked up now, some hundred paths and fifty of each
    /// other home, and never again: so judging is cheap, and exchanging the home for a link to another one in
    /// the middle of a run does not make that one the user's.
    PathPolicy(const UserEnvironment& user, const FileSystem& files);

    /// Judges one path that is about to be taken away. Looks at the text only: that of a path through links
    /// has to be judged once more without them.
    std::optional<Violation> check(const Path& url, bool allowsInstallerInDownloads = false) const;

    /// Judges a move between a real place and the quarantine, in either direction. Links of both parents are
    /// resolved through `files`, and where they lead is judged too; parents that do not exist yet are judged
    /// by the nearest one that does. Where the disk tells letter case apart, a folder beside the user's home
    /// whose name differs in that alone is not the home.
    tl::expected<JudgedMove, Violation> checkMove(const Path& source, const Path& destination,
                                                  const FileSystem& files) const;

    /// Something in a quarantine folder: below "<home>/.Trash/Tidwen - …", not that folder itself.
    bool isQuarantineEndpoint(const Path& url) const;
    /// A disk image or package that lies directly in the user's Downloads.
    bool isInstallerInDownloads(const Path& url) const;

    /// The path is a place that must not be taken away, or a folder in which one really lies. By its text; in
    /// a quarantine folder nothing else is protected.
    bool holdsProtectedPlace(const Path& url) const;

    /// Something in the home of another user: a folder of "/Users" that is neither the user's home nor
    /// "Shared", what a link there leads to (of the first thousand links), a folder of another place where
    /// homes lie, or one that an account names; or where the folders lead that macOS keeps in such a home (of
    /// the first hundred homes of "/Users"), from "Documents" to "Library/Preferences". Such places are never
    /// touched.
    bool isInAnotherHome(const Path& url) const;

  private:
    class RealPlaces;
    using Components = std::vector<std::string>; ///< each as `fileNameKey` gives it

    struct NeverTouchRule {
        Components prefix = {};
        std::vector<Components> exceptions = {};
        bool isDownloads = false; ///< installers may leave it
        friend bool operator==(const NeverTouchRule&, const NeverTouchRule&) = default;
    };

    // Each of these protects a place as it is spelled and where it really lies.
    void keepSharedPlaces(RealPlaces& places);
    void keepHomeFolders(const Path& home, RealPlaces& places);
    void keepOtherHomes(RealPlaces& places);
    void keepItself(const Path& place, RealPlaces& places);
    /// `rule` without its prefix.
    void keepWhole(const Path& place, NeverTouchRule rule, RealPlaces& places);
    void keepOtherHome(const Path& home, RealPlaces& places);
    void keepFoldersOf(const Path& otherHome, RealPlaces& places);
    /// False when it is shared or the user's own, and so not kept.
    bool keepOthers(const Path& place);

    /// Neither the place nor what it lies in may go.
    void deny(Components place);
    bool holdsTheHome(const Components& place) const;
    /// By the key of its name in the user's home, but not by what the disk says.
    bool isBesideTheHome(const Path& path, const FileSystem& files) const;
    bool isInAnotherHome(const Components& path) const;

    UserEnvironment user_;
    std::vector<Components> homes_;        ///< the spellings of the user's
    std::vector<Components> downloads_;    ///< and of its Downloads
    std::vector<Components> usersFolders_; ///< the spellings of "/Users"
    std::vector<Components> otherHomes_;   ///< of other users, and folders of such homes
    std::set<Components> deniedExact_;
    std::vector<NeverTouchRule> neverTouch_;
};

/// The one text that every violation is shown with.
inline constexpr const char* blockedBySafetyPolicyKey = "failure.blockedBySafetyPolicy";

/// How the name of every quarantine folder begins.
inline constexpr const char* quarantineFolderPrefix = "Tidwen - ";

} // namespace tidwen

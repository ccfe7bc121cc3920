#pragma once

#include "base/message.h"
#include "platform/file_system.h"
#include "scan/applications/app_target.h"
#include "scan/policy/path_policy.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// An application that cannot be taken from where it lies. Without it, only its data would go.
struct ImmovableApplication {
    enum class Reason {
        reachedThroughLink, ///< the bundle, or a folder above it, is a link
        protectedPlace,     ///< the safety policy lets nothing go from there
        partOfBundle,       ///< the bundle lies in another one, which is broken without it
        noRights,           ///< this process may not move it, and nobody who may can be asked
    };
    Reason reason = Reason::protectedPlace;
    Path place; ///< where the bundle really lies; of `partOfBundle` the outermost one that holds it

    /// Why, with the application's name and its real place.
    Message describe(const AppTarget& target) const;
    friend bool operator==(const ImmovableApplication&, const ImmovableApplication&) = default;
};

/// As it stands in JSON: "reachedThroughLink" and so on.
std::string_view name(ImmovableApplication::Reason reason);

/// Who can be asked for what this process may not move itself.
enum class MoveRights { own, administrator };

/// Why the application at the target's place cannot be removed from there; nothing when it can, when there is
/// none (a bundle in the user's Trash is away already), and when it has vanished.
std::optional<ImmovableApplication> whyNotRemovable(const AppTarget& target, const FileSystem& files,
                                                    const PathPolicy& policy, const UserEnvironment& user,
                                                    MoveRights rights);

} // namespace tidwen

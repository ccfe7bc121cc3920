#pragma once

#include "base/message.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/applications/app_target.h"
#include "scan/policy/path_policy.h"

#include <optional>
#include <string_view>

namespace tidwen {

/// An application that cannot be removed from its location. Without it, only its data would be removed.
struct ImmovableApplication {
    enum class Reason {
        reachedThroughLink, ///< the bundle, or a folder above it, is a link
        protectedPlace,     ///< the safety policy forbids moving anything from there
        partOfBundle,       ///< it is part of another bundle, which would break
        noRights,           ///< this process may not move it, and no one with the rights can be asked
    };
    Reason reason = Reason::protectedPlace;
    Path place; ///< real location of the bundle; for `partOfBundle` of the outermost bundle that contains it

    /// The reason, with the application's name and real location.
    Message describe(const AppTarget& target) const;
    friend bool operator==(const ImmovableApplication&, const ImmovableApplication&) = default;
};

/// As used in JSON: "reachedThroughLink" and so on.
std::string_view name(ImmovableApplication::Reason reason);

/// Who can move what this process may not.
enum class MoveRights { own, administrator };

/// Why the application at the target's location cannot be removed; nullopt when it can, when there is none (a
/// bundle in the user's Trash is already removed), and when it has disappeared.
std::optional<ImmovableApplication> whyNotRemovable(const AppTarget& target, const FileSystem& files,
                                                    const PathPolicy& policy, const UserEnvironment& user,
                                                    MoveRights rights);

} // namespace tidwen

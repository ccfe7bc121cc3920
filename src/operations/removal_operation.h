#pragma once

#include "base/path.h"
#include "base/uuid.h"
#include "scan/matching/trace.h"

#include <string>
#include <string_view>
#include <variant>

namespace tidwen {

/// `uninstall`: everything found goes. `reset`: the application and its receipts stay, only its data goes.
enum class RemovalMode { uninstall, reset };
std::string_view name(RemovalMode mode);

/// What one step does.
namespace operation {
struct QuitApplication {
    std::string bundleID;
    friend bool operator==(const QuitApplication&, const QuitApplication&) = default;
};
struct ResetPermissions {
    std::string bundleID;
    friend bool operator==(const ResetPermissions&, const ResetPermissions&) = default;
};
struct Bootout { ///< unload a job from the system domain or the user's graphical session
    std::string label;
    bool isSystemDomain = false;
    friend bool operator==(const Bootout&, const Bootout&) = default;
};
struct Bootstrap { ///< load a job again
    Path plist;
    bool isSystemDomain = false;
    friend bool operator==(const Bootstrap&, const Bootstrap&) = default;
};
struct Move {
    Path source;
    Path destination;
    friend bool operator==(const Move&, const Move&) = default;
};
struct DeleteKeychainItem {
    std::string service;
    bool isSystemKeychain = false;
    friend bool operator==(const DeleteKeychainItem&, const DeleteKeychainItem&) = default;
};
struct UnregisterApp { ///< drop the bundle from the Launch Services database
    Path bundleURL;
    friend bool operator==(const UnregisterApp&, const UnregisterApp&) = default;
};
struct FlushPreferences { ///< make the preference daemon drop its cached values
    friend bool operator==(const FlushPreferences&, const FlushPreferences&) = default;
};
} // namespace operation

/// One concrete step of a removal or an undo.
struct RemovalOperation {
    using Kind = std::variant<operation::QuitApplication, operation::ResetPermissions, operation::Bootout,
                              operation::Bootstrap, operation::Move, operation::DeleteKeychainItem,
                              operation::UnregisterApp, operation::FlushPreferences>;

    int id = 0; ///< unique in its plan, from 1 in plan order
    Kind kind;
    bool requiresRoot = false; ///< goes into the administrator batch
    Reversibility reversibility = Reversibility::reversible;
    std::string displayName;
    Uuid traceID = Uuid::random(); ///< of the trace it comes from, else fresh
    std::string bundleID;          ///< of the application it serves

    friend bool operator==(const RemovalOperation&, const RemovalOperation&) = default;
};

/// "move", "bootout" …: the kind's name in JSON.
std::string_view kindName(const RemovalOperation::Kind& kind);

} // namespace tidwen

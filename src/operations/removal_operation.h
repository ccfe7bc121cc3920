#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/uuid.h"
#include "scan/matching/found_item.h"
#include "scan/matching/trace.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

class Texts;

/// `uninstall` removes everything found. `reset` keeps the application and its receipts and removes only its
/// data.
enum class RemovalMode { uninstall, reset };
std::string_view name(RemovalMode mode);

/// The kinds of step.
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
    std::optional<FoundItem> found = {}; ///< nothing else is moved from there; absent: whatever is there
    friend bool operator==(const Move&, const Move&) = default;
};
struct DeleteKeychainItem {
    std::string service;
    bool isSystemKeychain = false;
    friend bool operator==(const DeleteKeychainItem&, const DeleteKeychainItem&) = default;
};
struct UnregisterApp { ///< remove the bundle from the Launch Services database
    Path bundleURL;
    friend bool operator==(const UnregisterApp&, const UnregisterApp&) = default;
};
struct FlushPreferences { ///< make the preference daemon discard its cached values
    friend bool operator==(const FlushPreferences&, const FlushPreferences&) = default;
};
} // namespace operation

/// One step of a removal or an undo.
struct RemovalOperation {
    using Kind = std::variant<operation::QuitApplication, operation::ResetPermissions, operation::Bootout,
                              operation::Bootstrap, operation::Move, operation::DeleteKeychainItem,
                              operation::UnregisterApp, operation::FlushPreferences>;

    int id = 0; ///< unique within its plan, from 1 in plan order
    Kind kind;
    bool requiresRoot = false; ///< runs in the administrator batch
    Reversibility reversibility = Reversibility::reversible;
    std::string displayName;                  ///< what it acts on; empty for a flush
    Uuid traceID = Uuid::random();            ///< of its trace, otherwise new
    std::string bundleID;                     ///< of the application it serves
    std::vector<std::string> sharedWith = {}; ///< move: other applications of the run that claim the item
    std::optional<Message> refusal = {};      ///< why it must not be run, as the disk is now

    friend bool operator==(const RemovalOperation&, const RemovalOperation&) = default;
};

/// The name of the step for people, in their language.
std::string displayName(const RemovalOperation& operation, const Texts& texts);

/// "move", "bootout" …: the name of the kind in JSON.
std::string_view kindName(const RemovalOperation::Kind& kind);

} // namespace tidwen

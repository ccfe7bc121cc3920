#pragma once

#include "base/message.h"
#include "base/path.h"
#include "base/uuid.h"
#include "platform/file_system.h"
#include "scan/matching/found_item.h"
#include "scan/policy/trace_category.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tidwen {

class Texts;

/// A page of System Settings on which only the user can change something.
enum class SettingsPane { fullDiskAccess, loginItemsAndExtensions, privacyAndSecurity };

/// A step that only the user can take.
struct GuidanceStep {
    Message instruction;
    std::optional<SettingsPane> settingsPane;
    friend bool operator==(const GuidanceStep&, const GuidanceStep&) = default;
};

/// How a trace is removed.
namespace action {
struct MovePath { ///< move the item into quarantine
    Path url;
    friend bool operator==(const MovePath&, const MovePath&) = default;
};
struct BootoutAndMove { ///< unload the launchd job, then quarantine its property list
    std::string label;
    Path plist;
    bool isSystemDomain = false;
    friend bool operator==(const BootoutAndMove&, const BootoutAndMove&) = default;
};
struct Bootout { ///< unload a job that has no file to move
    std::string label;
    bool isSystemDomain = false;
    friend bool operator==(const Bootout&, const Bootout&) = default;
};
struct ResetPermissions {
    std::string bundleID;
    friend bool operator==(const ResetPermissions&, const ResetPermissions&) = default;
};
struct DeleteKeychainItem { ///< every password item of the service
    std::string service;
    bool isSystemKeychain = false;
    friend bool operator==(const DeleteKeychainItem&, const DeleteKeychainItem&) = default;
};
struct Guidance { ///< nothing can be done automatically
    GuidanceStep step;
    friend bool operator==(const Guidance&, const Guidance&) = default;
};
} // namespace action

using TraceAction = std::variant<action::MovePath, action::BootoutAndMove, action::Bootout,
                                 action::ResetPermissions, action::DeleteKeychainItem, action::Guidance>;

/// Why a trace is attributed to the application.
struct MatchReason {
    enum class Kind {
        exactBundleID,
        receipt,
        appGroup,
        sharedAppGroup, ///< other installed applications declare the group, too
        nameToken,
        executableName,
        declaredTarget, ///< declared by the application itself: its bundle, its embedded jobs
    };
    /// Where the identifier or name was read; affects only the wording.
    enum class Evidence {
        itsName,
        record,   ///< in the container's record
        label,    ///< the job's label
        program,  ///< in the path of the job's program
        embedded, ///< the job or its program is inside the application's bundle
    };
    Kind kind = Kind::declaredTarget;
    std::string value =
        {}; ///< the identifier, package, group or name that matched; empty for `declaredTarget`
    Evidence evidence = Evidence::itsName;
    friend bool operator==(const MatchReason&, const MatchReason&) = default;
};

enum class Reversibility {
    reversible,              ///< moved into quarantine; undo restores it
    irreversibleHarmless,    ///< cannot be undone, no loss of value
    irreversibleDestructive, ///< cannot be undone and data is lost
    manualOnly,              ///< must be done by the user
};

enum class TraceRisk { safe, review, sensitive };

/// Another bundle on this Mac that claims an item.
struct Claimant {
    std::string bundleID; ///< as declared
    std::string name;     ///< the name shown to people
    Path place;           ///< where it lies
    friend bool operator==(const Claimant&, const Claimant&) = default;
};

/// One leftover of an application.
struct Trace {
    Uuid id = Uuid::random(); ///< new for every trace of every scan
    TraceCategory category = TraceCategory::supportFiles;
    TraceAction action;
    MatchReason reason;
    Reversibility reversibility = Reversibility::reversible;
    std::string displayName;               ///< a path for files; people see it by `displayName(trace, texts)`
    std::optional<std::int64_t> sizeBytes; ///< allocated on disk; absent for anything but files
    bool requiresRoot = false;
    TraceRisk risk = TraceRisk::review; ///< set by `makeTrace`
    /// Another bundle that stays, perhaps a second copy of the application, with an equal or stronger claim.
    /// Such a trace is shown but never selected by default.
    std::optional<Claimant> contestedBy;
    /// A file or bundle in a shared place with no evidence but a package's file list. Anyone can write such a
    /// list, so it is never selected by default either.
    bool isOnlyListed = false;
    /// A folder whose search for other applications, which would be moved along, was incomplete. Never
    /// selected by default either.
    bool mayHoldOthers = false;
    /// An application that could not be seen may own it. Never selected by default either.
    bool ownerUnsure = false;
    std::uint64_t innerItems = 0; ///< files and folders inside it, as far as they were measured
    bool isSizePartial = false;   ///< there was more than is measured: `sizeBytes` is a lower bound
    /// What is to be moved; absent where it could not be told, and for anything but files.
    std::optional<FoundItem> found = {};
    int itemCount = 1; ///< keychain: items of the service

    friend bool operator==(const Trace&, const Trace&) = default;
};

/// The name of the trace for people, in their language.
std::string displayName(const Trace& trace, const Texts& texts);

/// The risk tier of every trace. (Permission resets alone are always `review`.)
TraceRisk traceRisk(TraceCategory category, MatchReason::Kind reason, bool requiresRoot);

/// Sets `id` and `risk`; scanners create traces only with this function.
Trace makeTrace(TraceCategory category, TraceAction action, MatchReason reason, Reversibility reversibility,
                std::string displayName, std::optional<std::int64_t> sizeBytes, bool requiresRoot);

/// What a walk measured of it.
void setSize(Trace& trace, const TreeSize& size);
/// What lies at the path of a trace of this category, as found.
FoundItem foundItem(const FileInfo& info, TraceCategory category);

/// The file or folder whose move the trace asks for; nothing for traces that move nothing.
const Path* movedPath(const TraceAction& action);

// Names as used in JSON and in localization keys ("supportFiles", "exactBundleID").
std::string_view name(TraceCategory category);
std::string_view name(MatchReason::Kind kind);
std::string_view name(MatchReason::Evidence evidence);
std::string_view name(Reversibility reversibility);
std::string_view name(TraceRisk risk);
std::string_view name(SettingsPane pane);
std::optional<TraceRisk> parseTraceRisk(std::string_view text);

/// The URL of a settings pane ("x-apple.systempreferences:…").
std::string_view address(SettingsPane pane);

} // namespace tidwen

#pragma once

#include "base/path.h"
#include "scan/matching/found_item.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

/// A property list in one of the launchd folders.
struct StandaloneJobFile {
    Path url;
    std::optional<FoundItem> found = {}; ///< as listed
    friend bool operator==(const StandaloneJobFile&, const StandaloneJobFile&) = default;
};

/// A launchd job that can start on its own, with its owner.
struct StartupItem {
    using Plist = StandaloneJobFile;
    struct Embedded { ///< a property list inside an installed application
        Path bundle;
        std::string appName;
        friend bool operator==(const Embedded&, const Embedded&) = default;
    };
    using Source = std::variant<Plist, Embedded>;

    struct Owner {
        enum class Kind {
            installed,  ///< belongs to this installed application
            related,    ///< has its vendor's or product's name
            registered, ///< an application of this identifier is registered, though not in the inventory
            program,    ///< no owner found, but the program exists
            apple,
            missing, ///< its application is gone
            unknown, ///< no owner found, and the label shows nothing, or this disk lacks the program's
                     ///< location
        };
        Kind kind = Kind::unknown;
        std::string name;                ///< for `installed` and `related`: the application's name
        std::string bundleID;            ///< for `installed` and `registered`
        std::string path;                ///< for `program`
        std::optional<Path> bundle = {}; ///< for `installed` and `related`: where the application is
        friend bool operator==(const Owner&, const Owner&) = default;
    };

    std::string label;
    Source source;
    bool isSystemDomain = false;
    std::optional<std::string> programPath;
    Owner owner;

    /// The property list's path, or the bundle's path, "#" and the label.
    std::string id() const;
    bool isEmbedded() const { return std::holds_alternative<Embedded>(source); }
    /// The job's own property list; null for an embedded job.
    const Path* plist() const;

    friend bool operator==(const StartupItem&, const StartupItem&) = default;
};

std::string_view name(StartupItem::Owner::Kind kind);

/// The sections in which the list is shown.
enum class StartupSection { owned, unattributed, orphans };
StartupSection section(const StartupItem& item);

/// The item is an orphan and names a program that is gone. One that names none may be started by something
/// its property list does not show.
bool hasLostProgram(const StartupItem& item);

struct StartupScanResult {
    std::vector<StartupItem> items; ///< orphans first, then by label in display order
    std::vector<Path> unreadable;   ///< folders of jobs or applications, and jobs, that could not be read
    std::uint64_t leftOut = 0;      ///< jobs and folders not read completely because the budget was exhausted
    friend bool operator==(const StartupScanResult&, const StartupScanResult&) = default;
};

} // namespace tidwen

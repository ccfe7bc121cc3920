#pragma once

#include "base/path.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

/// A launchd job that can start on its own, and whose it is.
struct StartupItem {
    struct Plist { ///< a property list in one of the launchd folders
        Path url;
        friend bool operator==(const Plist&, const Plist&) = default;
    };
    struct Embedded { ///< a property list inside an installed application
        Path bundle;
        std::string appName;
        friend bool operator==(const Embedded&, const Embedded&) = default;
    };
    using Source = std::variant<Plist, Embedded>;

    struct Owner {
        enum class Kind {
            installed,  ///< belongs to this installed application
            related,    ///< looks like its vendor's or product's
            registered, ///< an application of this identifier is known, though not in the inventory
            program,    ///< no owner found, but the program is on the disk
            apple,
            missing, ///< the application that left it is gone
            unknown, ///< no owner found, and the label tells nothing, or this disk lacks the program's place
        };
        Kind kind = Kind::unknown;
        std::string name;     ///< of `installed` and `related`: the application's name
        std::string bundleID; ///< of `installed` and `registered`
        std::string path;     ///< of `program`
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
    /// The job's own property list; nothing for an embedded job.
    const Path* plist() const;

    friend bool operator==(const StartupItem&, const StartupItem&) = default;
};

std::string_view name(StartupItem::Owner::Kind kind);

/// The three sections that the list is shown in.
enum class StartupSection { owned, unattributed, orphans };
StartupSection section(const StartupItem& item);

/// The item is an orphan and names the program that is gone. One that names none may be started by what its
/// property list does not tell.
bool hasLostProgram(const StartupItem& item);

struct StartupScanResult {
    std::vector<StartupItem> items; ///< orphans first, then by label as people read
    std::vector<Path> unreadable;   ///< folders of jobs or applications that exist and could not be listed
    std::uint64_t leftOut = 0;      ///< jobs and folders not read to their end: there is too much to read
    friend bool operator==(const StartupScanResult&, const StartupScanResult&) = default;
};

} // namespace tidwen

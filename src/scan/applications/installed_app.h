#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/applications/app_target.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace tidwen {

/// Evidence of when an application was last used.
struct UsageEvidence {
    enum class Kind { launchRecord, appData, none };
    Kind kind = Kind::none;
    std::optional<Timestamp> date; ///< present unless `none`
    friend bool operator==(const UsageEvidence&, const UsageEvidence&) = default;
};

struct AppUsage {
    UsageEvidence evidence;
    std::optional<int> useCount;
    bool isRunning = false;
    friend bool operator==(const AppUsage&, const AppUsage&) = default;
};

/// One row of the inventory. Identified by `url`.
struct InstalledApp {
    Path url;
    std::string name;
    std::string bundleID;
    std::optional<std::string> teamID;
    std::optional<std::string> version;
    std::optional<std::string> category; ///< raw "LSApplicationCategoryType"
    bool isBackgroundAgent = false;
    bool hasResidentHelper = false;        ///< filled by the inventory
    std::optional<std::int64_t> sizeBytes; ///< filled by the inventory's measurement
    std::optional<AppUsage> usage;         ///< filled by the inventory's probe
    bool isSizePartial = false;            ///< there was more than is measured: `sizeBytes` is a lower bound

    friend bool operator==(const InstalledApp&, const InstalledApp&) = default;
};

/// For lists of many that hold the same ones; never null in them.
using SharedApp = std::shared_ptr<const InstalledApp>;

/// The first seven fields, read from the bundle; nullopt when the loader refuses it.
std::optional<InstalledApp> makeInstalledApp(const FileSystem& files, const CodeSignatures& signatures,
                                             const Path& bundle);

} // namespace tidwen

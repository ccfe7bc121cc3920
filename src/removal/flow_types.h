#pragma once

#include "base/uuid.h"
#include "quarantine/manifest.h"
#include "removal/removal_report.h"
#include "scan/matching/scan_result.h"
#include "sweep/orphan_scanner.h"

#include <string>
#include <variant>
#include <vector>

namespace tidwen {

/// What the main window shows.
namespace stage {
struct Idle {};
struct StartupItems {};
struct Installers {};
struct History {};
struct Scanning {
    std::string name;  ///< of the application that is being scanned; empty for a sweep
    std::string phase; ///< a localised category title
    int done = 0;      ///< applications scanned
    int total = 0;
};
struct Review {
    std::vector<ScanResult> results;
};
struct Orphans {
    OrphanScanResult result;
};
struct Removing {};
struct Report {
    RemovalReport report;
};
} // namespace stage

using Stage = std::variant<stage::Scanning, stage::Review, stage::Orphans, stage::Report, stage::Idle,
                           stage::StartupItems, stage::Installers, stage::History, stage::Removing>;

/// "scanning", "review" …
std::string_view name(const Stage& stage);

/// An application that is to be removed still runs and did not quit.
struct QuitPrompt {
    Uuid id = Uuid::random();
    std::string appName;
};
enum class QuitPromptChoice {
    forceContinue, ///< go on while it runs
    cancelApp,     ///< leave this application out; the others are removed
};

/// A run was cut off, and this is what of it lies in quarantine.
struct RecoveryNotice {
    Manifest manifest;
    /// The old places of items that could not be brought to either of their two places; the next start tries
    /// again.
    std::vector<std::string> unsettled = {};
};

} // namespace tidwen

#pragma once

#include "base/byte_sum.h"
#include "base/path.h"
#include "base/uuid.h"
#include "removal/removal_report.h"
#include "removal/removal_subject.h"
#include "scan/matching/scan_result.h"
#include "sweep/orphan_scanner.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

/// The stages of the main window.
namespace stage {
struct Idle {};
struct StartupItems {};
struct Installers {};
struct History {};
struct Scanning {
    std::string name; ///< the application being scanned; empty for a sweep
    int done = 0;     ///< applications scanned
    int total = 0;
    Path bundle = {};      ///< of the application being scanned, if it has one
    std::size_t found = 0; ///< items, in the applications scanned so far
    ByteSum size = {};
};
struct Review {
    std::shared_ptr<const std::vector<ScanResult>> results; ///< never null
};
struct Orphans {
    std::shared_ptr<const OrphanScanResult> result; ///< never null
};
struct Removing {
    RemovalSubject subject;
};
struct Report {
    RemovalReport report;
    RemovalSubject subject; ///< without what was left out at a quit prompt
};
} // namespace stage

using Stage = std::variant<stage::Scanning, stage::Review, stage::Orphans, stage::Report, stage::Idle,
                           stage::StartupItems, stage::Installers, stage::History, stage::Removing>;

/// "scanning", "review" …
std::string_view name(const Stage& stage);

/// An application to be removed is still running and did not quit.
struct QuitPrompt {
    Uuid id = Uuid::random();
    std::string appName;
};
enum class QuitPromptChoice {
    forceContinue, ///< continue while it is running
    cancelApp,     ///< leave this application out and remove the others
};

/// What a change of a `RemovalFlowModel` is about.
enum class FlowChange {
    stage,     ///< the stage, and everything that depends on it
    phase,     ///< how far the scan has come
    problems,  ///< only why a request was not done
    selection, ///< what is removed and what stays
    listing,   ///< the filter or the order of the review
    prompt,    ///< the quit prompt
    undo,      ///< the undo of the report's run, and `problems`
};

} // namespace tidwen

#pragma once

#include "base/path.h"
#include "base/texts.h"
#include "operations/removal_operation.h"
#include "quarantine/history.h"
#include "quarantine/recovery.h"
#include "quarantine/run_items.h"
#include "quarantine/undo_service.h"
#include "quarantine/unfinished_run.h"
#include "removal/removal_report.h"
#include "removal/removal_subject.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/scan_result.h"
#include "settings/app_tags.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The output of `--json`. Objects use the field names of the records; paths are strings, dates ISO 8601 in
/// UTC, absent optionals are omitted. An enumeration is its name as a string; one whose cases carry data is
/// an object of "kind" and the case's fields. Always valid JSON and UTF-8, whatever names are on disk.
namespace tidwen::json {

struct Sample {
    std::filesystem::path root;
    Path home;
    int applications = 0;
    std::uint64_t bytes = 0;
};

std::string document(const Sample& sample);
/// Each application with its tags and protection.
std::string document(const std::vector<const InstalledApp*>& apps, const AppTags& tags,
                     const ProtectedApps& protectedApps);
std::string document(const std::vector<ScanResult>& results, const Texts& texts);
std::string document(const std::vector<RemovalOperation>& plan, const Texts& texts);
/// A failed result has its reason as text and, as "failureKey", as a key that does not depend on the
/// language.
std::string document(const RemovalReport& report, const RemovalSubject& subject, const Texts& texts);
/// The runs in order, numbered from 1 unless the numbers are uncertain, then those without a readable
/// manifest; "status" distinguishes them.
std::string document(const std::vector<RemovalHistoryEntry>& entries, bool areNumbered,
                     const std::vector<UnfinishedRun>& unfinished, const Texts& texts);
/// One run with the state of each of its items.
std::string document(const RemovalHistoryEntry& entry, std::optional<std::size_t> number,
                     const std::vector<RunItem>& items);
std::string document(const UnfinishedRun& run, const std::vector<RunItem>& items, const Texts& texts);
std::string document(const UndoReport& report, const Texts& texts);
std::string document(const Path& root, const UndoPlan& plan, const Texts& texts);
std::string document(const RecoveryOutcome& outcome, const Texts& texts);

} // namespace tidwen::json

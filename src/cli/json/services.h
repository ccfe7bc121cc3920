#pragma once

#include "base/path.h"
#include "cli/console.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/unfinished_run.h"
#include "scan/applications/app_target.h"
#include "services/update_feed.h"
#include "system/trash_catcher.h"

#include <string>
#include <string_view>
#include <vector>

/// Documents of the purge, the watch, the inbox and the update check; for their format see json/output.h.
namespace tidwen::json {

/// `spared`: runs not deleted because what they moved is unknown.
std::string document(const QuarantinePurge::Outcome& outcome, const std::vector<UnfinishedRun>& spared);
std::string document(const UpdateAnswer& answer, std::string_view running);
/// The requested applications.
std::string requestsDocument(const std::vector<Path>& applications);
std::string gateDocument(bool isOpen);

/// Why a command that prints a document on success printed none. The key is that of the first error with a
/// key.
std::string failureDocument(const std::vector<ErrorText>& errors);
std::string failureLine(const std::vector<ErrorText>& errors);

/// One line each, for a reader that processes lines as they arrive.
std::string line(const TrashedApp& found);
std::string requestLine(const AppTarget& requested);

} // namespace tidwen::json

#pragma once

#include "base/texts.h"
#include "operations/removal_operation.h"
#include "removal/removal_report.h"
#include "removal/removal_summary.h"
#include "scan/policy/removability.h"

#include <optional>
#include <string>
#include <vector>

/// The texts about a removal, the same in every view.
namespace tidwen {

struct ConfirmationTexts {
    std::string title;                           ///< "Remove Marlin Notes?"
    std::string summary;                         ///< "12 items, 3.4 MB"
    std::vector<std::string> breakdown;          ///< one line per tier: "10 safe, 3.1 MB"
    std::optional<std::string> reversible;       ///< how many items can be put back
    std::optional<std::string> unloaded;         ///< how many jobs are only unloaded
    std::optional<std::string> permanentHeading; ///< heading of `permanent`
    std::vector<std::string> permanent;          ///< names of what is lost permanently
    std::optional<std::string> password;         ///< present when an administrator is asked
    std::optional<std::string> permissionsReset;
};

/// `rights`: with those of the user alone nobody is asked for a password.
ConfirmationTexts confirmationTexts(const RemovalSummary& summary, const std::string& subject,
                                    RemovalMode mode, MoveRights rights, const Texts& texts);

struct ReportTexts {
    struct Failure {
        std::string subject;
        std::string reason; ///< with what helps, where something is known to
    };
    std::string summary;                   ///< "Marlin Notes removed"
    bool isWhole = false;                  ///< every item to be moved was moved
    std::string counts;                    ///< "9 of 10 removed": items moved, and all
    std::optional<std::string> reclaimed;  ///< absent if the size is unknown
    std::optional<std::string> stopped;    ///< number of steps not begun when it was stopped
    std::vector<Failure> failures;         ///< of steps that were begun
    std::vector<std::string> verification; ///< empty when nothing was checked
    std::vector<Failure> unsettled;        ///< of items not completely in quarantine
    std::vector<std::string> remarks;      ///< folders emptied, links that lead nowhere now, names left out
    bool isClean = true;                   ///< no permission remains, as far as the databases were readable
};

ReportTexts reportTexts(const RemovalReport& report, const std::string& subject, const Texts& texts);

} // namespace tidwen

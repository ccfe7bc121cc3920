#pragma once

#include "base/texts.h"
#include "removal/removal_report.h"
#include "removal/removal_summary.h"

#include <optional>
#include <string>
#include <vector>

/// The words around a removal, the same wherever they are shown.
namespace tidwen {

struct ConfirmationTexts {
    std::string title;                           ///< "Remove Marlin Notes?"
    std::string summary;                         ///< "12 items, 3.4 MB"
    std::vector<std::string> breakdown;          ///< a line per tier: "10 safe, 3.1 MB"
    std::optional<std::string> reversible;       ///< how much can be put back
    std::optional<std::string> permanentHeading; ///< stands over `permanent`
    std::vector<std::string> permanent;          ///< names of what is lost for good
    std::optional<std::string> password;         ///< present when an administrator is needed
    std::optional<std::string> permissionsReset;
};

ConfirmationTexts confirmationTexts(const RemovalSummary& summary, const std::string& subject,
                                    RemovalMode mode, const Texts& texts);

struct ReportTexts {
    std::string summary;                   ///< "Marlin Notes removed"
    bool isWhole = false;                  ///< every item that was to be moved was
    std::string counts;                    ///< "9 of 10 removed": items that were moved, and all
    std::optional<std::string> reclaimed;  ///< absent while the size is not known
    std::optional<std::string> stopped;    ///< how many steps were not begun when it was told to stop
    std::vector<std::string> failures;     ///< "name: reason", of the steps that were begun
    std::vector<std::string> verification; ///< empty when nothing was checked
    bool isClean = true;                   ///< no permission is left, as far as everything could be read
};

ReportTexts reportTexts(const RemovalReport& report, const std::string& subject, const Texts& texts);

} // namespace tidwen

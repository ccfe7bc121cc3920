#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "cli/arguments.h"
#include "operations/removal_operation.h"
#include "program/host_paths.h"
#include "removal/findings.h"
#include "scan/matching/trace.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Restricts what is listed and removed to names that contain a text; empty without the option.
inline constexpr const char* filterOption = "--filter";
std::string searchText(const Arguments& arguments);

/// The selection options.
struct SelectionRequest {
    std::vector<std::string> selectors = {};    ///< of single traces or of an application
    std::optional<std::set<TraceRisk>> tiers{}; ///< their uncontested items
    std::string listing = "scan";               ///< the command that lists what can be selected

    bool isEmpty() const { return selectors.empty() && !tiers; }
};

/// Parses "safe,review", also by the printed titles, ignoring case; the error names the invalid word.
tl::expected<std::set<TraceRisk>, Message> parseTiers(const std::vector<std::string>& words,
                                                      const Texts& texts);

struct Selection {
    std::vector<Uuid> ids;
    std::vector<Uuid> named = {}; ///< those of `ids` that were selected individually
};

/// Resolves a non-empty request. A selector is the first of these that matches: a trace's path or identifier,
/// the application's or group's name or identifier (which selects its defaults), a trace's display name, or
/// the end of the path of exactly one item. Names are compared exactly, else as a Mac's file systems do. A
/// selector that matches nothing, several items, or something that cannot be removed in this mode is refused.
/// Selectors may be joined by commas.
tl::expected<Selection, Message> chooseTraces(const std::vector<FoundGroup>& found,
                                              const SelectionRequest& request, RemovalMode mode,
                                              const HostPaths& hostPaths, const Texts& texts);

} // namespace tidwen

#pragma once

#include "base/message.h"
#include "base/texts.h"
#include "operations/removal_operation.h"
#include "program/host_paths.h"
#include "removal/findings.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// Which of the found traces are to be taken, as options name them.
struct SelectionRequest {
    std::vector<std::string> selectors = {};    ///< of single traces or of an application
    std::optional<std::set<TraceRisk>> tiers{}; ///< the items of these tiers that nobody contests
    std::string listing = "scan";               ///< the command that prints what can be named

    bool isEmpty() const { return selectors.empty() && !tiers; }
};

/// "safe,review" → the tiers, also by the titles that are printed, in any letter case; the reason names the
/// word that is none.
tl::expected<std::set<TraceRisk>, Message> parseTiers(const std::vector<std::string>& words,
                                                      const Texts& texts);

struct Selection {
    std::vector<Uuid> ids;
    std::vector<Uuid> named = {}; ///< of these, the items that were named one by one
};

/// What a request that is not empty names. A selector is a trace's path or identifier, the application's or
/// group's name or identifier (which stands for what is taken of it by default), a trace's display name, or
/// the end of the path of one single item; the first of these that fits counts. Names are compared as a Mac's
/// disk compares them, unless one fits exactly. A selector is refused when it names nothing that was found,
/// several items, or something that cannot be taken in this mode; several of them at once may be joined by
/// commas.
tl::expected<Selection, Message> chooseTraces(const std::vector<FoundGroup>& found,
                                              const SelectionRequest& request, RemovalMode mode,
                                              const HostPaths& hostPaths);

} // namespace tidwen

#pragma once

#include "base/message.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/flow_session.h"
#include "operations/removal_operation.h"
#include "program/mac.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// What is removed when no option selects.
enum class Chosen {
    byDefault, ///< the default selection of a removal
    all,       ///< everything: the user chose it by name
};

/// Selects among what the session's model shows, as "--select" and "--risk" say or by default, and removes
/// it: the plan with "--dry-run", else summary, question, run and report.
ExitStatus removeFound(const CommandContext& context, Mac& mac, FlowSession& session, RemovalMode mode,
                       Chosen chosen = Chosen::byDefault);

/// Asks for confirmation. True with "--yes" or after a yes. Otherwise refuses: with the text `refusal` where
/// no question can be asked, else because the user declined.
bool agreed(const CommandContext& context, const std::string& question, std::string_view refusal);

/// The error if one of `removalOptions` other than `meaningful` was given to a call that removes nothing: the
/// user expects a removal.
std::optional<Message> idleOption(const Arguments& arguments, std::string_view meaningful = {});

/// The options of every command that removes something.
std::vector<OptionSyntax> removalOptions();

} // namespace tidwen

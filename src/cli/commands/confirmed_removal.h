#pragma once

#include "cli/command.h"
#include "cli/flow_session.h"

#include <string>
#include <vector>

namespace tidwen {

/// What is taken when no option chooses.
enum class Chosen {
    byDefault, ///< what a removal takes without further choice
    all,       ///< everything: it was chosen by name
};

/// Which of what the session's model shows goes, as "--select" and "--risk" say or as nothing says, and then
/// one removal of it: the plan with "--dry-run", else summary, question, run and report.
ExitStatus removeFound(const CommandContext& context, Mac& mac, FlowSession& session, RemovalMode mode,
                       Chosen chosen = Chosen::byDefault);

/// Narrows what is listed, and with it what is removed, to what has a text in its name.
inline constexpr const char* filterOption = "--filter";
std::string searchText(const Arguments& arguments);

/// Asks before something that cannot be taken back lightly. True when it was agreed to beforehand ("--yes")
/// or is agreed to now; else what was said is printed, or, where nobody can be asked, the text `refusal`.
bool agreed(const CommandContext& context, const std::string& question, std::string_view refusal);

/// Why a command that removes nothing this time cannot take one of `removalOptions`, when one was given:
/// whoever gave it believes that something will be removed.
std::optional<Message> idleOption(const Arguments& arguments, std::string_view meaningful = {});

/// The options of every command that ends in a removal.
std::vector<OptionSyntax> removalOptions();

} // namespace tidwen

#pragma once

#include "cli/command.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_choice.h"
#include "removal/removal_texts.h"

#include <optional>
#include <string>
#include <vector>

/// What a removal prints for people: before, in place of, and after it.
namespace tidwen {

/// The items that will be taken, before the question.
void printItems(const std::vector<GoingGroup>& going, const CommandContext& context);

/// What taking them means.
void printConfirmation(const ConfirmationTexts& words, const CommandContext& context, const Mac& mac);

/// What was found and will not be taken, and what only the user can do about it.
void printLeft(const std::vector<StayingGroup>& staying, const CommandContext& context);

/// Each item that stays after a run, with the reason, and the commands that take these items too. `undo`:
/// the command that undoes the run, when it can be undone.
void printRemainders(const RemovalReport& report, const std::optional<std::string>& undo,
                     const CommandContext& context);

/// The numbered steps.
void printPlan(const std::vector<RemovalOperation>& plan, const QuarantineLayout& layout,
               const CommandContext& context);

/// What came of each step.
void printReport(const RemovalReport& report, const ReportTexts& words, const CommandContext& context);

} // namespace tidwen

#pragma once

#include "cli/command.h"
#include "operations/removal_operation.h"
#include "program/mac.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_choice.h"
#include "removal/removal_report.h"
#include "removal/removal_texts.h"

#include <optional>
#include <string>
#include <vector>

/// Prints a removal for people: before, instead of, and after it.
namespace tidwen {

/// The items to be removed, before the question.
void printItems(const std::vector<GoingGroup>& going, const CommandContext& context);

/// The consequences of removing them.
void printConfirmation(const ConfirmationTexts& words, const CommandContext& context, const Mac& mac);

/// What was found and stays, with instructions for what only the user can remove.
void printLeft(const std::vector<StayingGroup>& staying, const CommandContext& context);

/// The items that stay after a run, with reasons, and the commands that remove them too. `undo`: the command
/// that undoes the run, if possible.
void printRemainders(const RemovalReport& report, const std::optional<std::string>& undo,
                     const CommandContext& context);

/// The numbered steps.
void printPlan(const std::vector<RemovalOperation>& plan, const QuarantineLayout& layout,
               const CommandContext& context);

/// The result of each step.
void printReport(const RemovalReport& report, const ReportTexts& words, const CommandContext& context);

} // namespace tidwen

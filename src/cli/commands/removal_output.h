#pragma once

#include "cli/command.h"
#include "operations/removal_operation.h"
#include "program/mac.h"
#include "quarantine/quarantine_layout.h"
#include "removal/chosen_items.h"
#include "removal/removal_choice.h"
#include "removal/removal_report.h"
#include "removal/removal_subject.h"
#include "removal/removal_texts.h"

#include <string>
#include <vector>

/// Prints a removal for people: before, instead of, and after it.
namespace tidwen {

/// The items to be removed, before the question.
void printItems(const RemovalChoice& choice, const CommandContext& context);

/// The consequences of removing them.
void printConfirmation(const ConfirmationTexts& words, const CommandContext& context);

/// The items that stay, each with its reason, and the command that lists them again; with instructions for
/// what only the user can remove. What the listing of all leftovers or installers shows anyway is counted.
void printLeft(const std::vector<Remainder>& left, RemovalSubject::Kind kind, const CommandContext& context);

/// The numbered steps.
void printPlan(const std::vector<RemovalOperation>& plan, const QuarantineLayout& layout,
               const CommandContext& context);

/// The result of each step.
void printReport(const RemovalReport& report, const ReportTexts& words, const CommandContext& context);

} // namespace tidwen

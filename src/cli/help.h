#pragma once

#include "base/texts.h"
#include "cli/arguments.h"

#include <string>
#include <vector>

/// The texts of `--help`.
namespace tidwen::help {

/// The options of every command, allowed before and after it.
const std::vector<OptionSyntax>& globalOptions();

std::string program(const std::vector<CommandSyntax>& commands, const Texts& texts);
std::string command(const CommandSyntax& syntax, const Texts& texts);

/// The operands of a command without actions: "APP...", "[RUN]", "".
std::string operands(const CommandSyntax& syntax);

/// Appended to every message about wrong usage: the syntax of the command, or of the program, and where to
/// read more.
std::string usage(const CommandSyntax* syntax, const Texts& texts);

} // namespace tidwen::help

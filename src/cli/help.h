#pragma once

#include "cli/arguments.h"

#include <string>
#include <vector>

/// The texts of `--help`.
namespace tidwen::help {

/// The options that every command understands, before it or after it.
const std::vector<OptionSyntax>& globalOptions();

std::string program(const std::vector<CommandSyntax>& commands, const Texts& texts);
std::string command(const CommandSyntax& syntax, const Texts& texts);

/// What stands behind a command that has no actions: "APP...", "[RUN]", nothing.
std::string operands(const CommandSyntax& syntax);

/// What follows every message about wrong usage: how to call the command, or without one the program, and
/// where to read more.
std::string usage(const CommandSyntax* syntax, const Texts& texts);

} // namespace tidwen::help

#pragma once

#include "base/message.h"
#include "base/texts.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// That an option, or a setting, cannot have this value; `allowed`: the others, separated by commas.
inline Message invalidValue(std::string_view name, const std::string& value, const std::string& allowed) {
    return {"cli.invalidValue %@ %@ %@", {std::string(name), value, allowed}};
}

/// An option of one command, in addition to the global ones.
struct OptionSyntax {
    std::string_view name;      ///< "--risk"
    std::string_view valueName; ///< "TIERS", or all values as "name|size"; empty for a flag
    std::string_view help;      ///< text key
};

/// A first operand of a command that has several.
struct ActionSyntax {
    std::string_view form; ///< with the operands that follow: "add APP TAG"
    std::string_view help; ///< text key
};

/// The syntax of one command.
struct CommandSyntax {
    std::string_view name;
    std::string_view summary;          ///< text key
    std::string_view operandName = {}; ///< "APP"; empty if the command takes no operands
    std::string_view operandForm = {}; ///< "RUN [ITEM...]", unless name and numbers suffice
    std::string_view operandHelp = {}; ///< text key; empty if `actions` describe the operands
    std::size_t minimumOperands = 0;
    std::size_t maximumOperands = 0;
    std::vector<OptionSyntax> options = {};
    std::vector<ActionSyntax> actions = {}; ///< the allowed first operands; empty if any is allowed
    bool isHidden = false;                  ///< for this program's own scripts; not listed in help

    /// The first word of each of `actions`.
    std::vector<std::string_view> actionWords() const;
};

inline constexpr std::size_t anyNumber = 1'000'000;

/// The parsed command line.
struct Arguments {
    std::string program; ///< argv[0]
    std::string command;
    std::vector<std::string> operands;
    std::optional<std::filesystem::path> volume;
    std::optional<std::string> home;
    bool json = false;
    bool yes = false;
    bool quiet = false;
    bool verbose = false;
    /// The command's own options that are present; a flag has no values.
    std::map<std::string, std::vector<std::string>, std::less<>> options = {};

    bool has(std::string_view option) const { return options.contains(option); }
    std::vector<std::string> values(std::string_view option) const;
};

/// The program exits at once: help or version requested, or wrong usage.
struct EarlyExit {
    int status = 0;
    std::string text;    ///< for standard output if `status` is 0, else for standard error
    Message reason = {}; ///< unless `status` is 0
};

/// "0.1.0".
std::string_view programVersion();

/// Parses the command line. Global options are allowed before and after the command. `defaultVolume`: the
/// volume from the environment, used without an option; may be null.
tl::expected<Arguments, EarlyExit> parseArguments(int count, const char* const* words,
                                                  const std::vector<CommandSyntax>& commands,
                                                  const Texts& texts, const char* defaultVolume = nullptr);

/// The environment variable for `defaultVolume`.
inline constexpr const char* volumeVariable = "TIDWEN_VOLUME";

} // namespace tidwen

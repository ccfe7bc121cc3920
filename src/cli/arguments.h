#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// An option that one command has beside the global ones.
struct OptionSyntax {
    std::string_view name;      ///< "--risk"
    std::string_view valueName; ///< "TIERS", or all values as "name|size"; empty: the option is a flag
    std::string_view help;
};

/// How one command is called.
struct CommandSyntax {
    std::string_view name;
    std::string_view summary;
    std::string_view operandName = {}; ///< "APP"; empty: the command takes no operand
    std::string_view operandHelp = {};
    std::size_t minimumOperands = 0;
    std::size_t maximumOperands = 0;
    std::vector<OptionSyntax> options = {};
    std::vector<std::string_view> actions =
        {}; ///< the words that the first operand may be, when they are fixed
};

inline constexpr std::size_t anyNumber = 1'000'000;

/// What was asked for on the command line.
struct Arguments {
    std::string program; ///< as it was called
    std::string command;
    std::vector<std::string> operands;
    std::optional<std::filesystem::path> volume;
    std::optional<std::string> home;
    bool json = false;
    bool yes = false;
    bool verbose = false;
    /// The command's own options that were given; a flag has no values.
    std::map<std::string, std::vector<std::string>, std::less<>> options = {};

    bool has(std::string_view option) const { return options.contains(option); }
    std::vector<std::string> values(std::string_view option) const;
};

/// The program ends at once: help or version was asked for, or the usage was wrong.
struct EarlyExit {
    int status = 0;
    std::string text; ///< for standard output when `status` is 0, else for standard error
};

/// "0.1.0".
std::string_view programVersion();

/// Reads the command line. Global options may stand before the command and after it. Help is in English like
/// the rest of the program's grammar.
tl::expected<Arguments, EarlyExit> parseArguments(int count, const char* const* words,
                                                  const std::vector<CommandSyntax>& commands);

} // namespace tidwen

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

/// An option that one command has beside the global ones.
struct OptionSyntax {
    std::string_view name;      ///< "--risk"
    std::string_view valueName; ///< "TIERS", or all values as "name|size"; empty: the option is a flag
    std::string_view help;      ///< the key of its words
};

/// How one command is called.
struct CommandSyntax {
    std::string_view name;
    std::string_view summary;          ///< the key of its words
    std::string_view operandName = {}; ///< "APP"; empty: the command takes no operand
    std::string_view operandForm = {}; ///< "RUN [ITEM...]", where the name and the numbers do not tell
    std::string_view operandHelp = {}; ///< the key of its words; none where `actions` tell
    std::size_t minimumOperands = 0;
    std::size_t maximumOperands = 0;
    std::vector<OptionSyntax> options = {};
    /// What the first operand may be when that is fixed, each with the operands behind it: "add APP TAG".
    std::vector<std::string_view> actions = {};
    bool isHidden = false; ///< for scripts of this program alone, so no help lists it

    /// The first words of `actions`.
    std::vector<std::string_view> actionWords() const;
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
    bool quiet = false;
    bool verbose = false;
    /// The command's own options that were given; a flag has no values.
    std::map<std::string, std::vector<std::string>, std::less<>> options = {};

    bool has(std::string_view option) const { return options.contains(option); }
    std::vector<std::string> values(std::string_view option) const;
};

/// The program ends at once: help or version was asked for, or the usage was wrong.
struct EarlyExit {
    int status = 0;
    std::string text;    ///< for standard output when `status` is 0, else for standard error
    Message reason = {}; ///< why, unless `status` is 0
};

/// "0.1.0".
std::string_view programVersion();

/// Reads the command line. Global options may stand before the command and after it. `defaultVolume`: the
/// volume where no option names one, as the environment has it; may be null.
tl::expected<Arguments, EarlyExit> parseArguments(int count, const char* const* words,
                                                  const std::vector<CommandSyntax>& commands,
                                                  const Texts& texts, const char* defaultVolume = nullptr);

/// The variable of the environment that `defaultVolume` comes from.
inline constexpr const char* volumeVariable = "TIDWEN_VOLUME";

} // namespace tidwen

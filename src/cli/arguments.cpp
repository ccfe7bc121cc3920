#include "cli/arguments.h"

#include "base/text.h"
#include "cli/help.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace tidwen {

namespace {

constexpr int wrongUsage = 2;

CLI::Option* declare(CLI::App& app, const OptionSyntax& syntax) {
    const std::string name(syntax.name);
    if (syntax.valueName.empty()) return app.add_flag(name);
    // One value at a time, or an option would swallow the operands behind it.
    return app.add_option(name)
        ->type_name(std::string(syntax.valueName))
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
}

/// The values that were given for an option of `app`, empty for a flag; nothing when it was not given.
std::optional<std::vector<std::string>> given(const CLI::App& app, const OptionSyntax& syntax) {
    const auto* option = app.get_option(std::string(syntax.name));
    if (option->count() == 0) return std::nullopt;
    return syntax.valueName.empty() ? std::vector<std::string>{} : option->results();
}

void readGlobalOptions(const CLI::App& app, Arguments& result) {
    const auto last = [&](const char* name) -> std::optional<std::string> {
        const auto* option = app.get_option(name);
        return option->count() > 0 ? std::optional(option->results().back()) : std::nullopt;
    };
    if (const auto volume = last("--volume")) result.volume = *volume;
    result.home = last("--home");
    result.json = app.count("--json") > 0;
    result.yes = app.count("--yes") > 0;
    result.verbose = app.count("--verbose") > 0;
}

const CommandSyntax* find(const std::vector<CommandSyntax>& commands, std::string_view name) {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const CommandSyntax& syntax) { return syntax.name == name; });
    return found == commands.end() ? nullptr : &*found;
}

const OptionSyntax* findOption(const CommandSyntax* command, std::string_view name) {
    const auto findIn = [&](const std::vector<OptionSyntax>& options) -> const OptionSyntax* {
        const auto found = std::find_if(options.begin(), options.end(),
                                        [&](const OptionSyntax& option) { return option.name == name; });
        return found == options.end() ? nullptr : &*found;
    };
    const auto* option = findIn(help::globalOptions());
    return option || !command ? option : findIn(command->options);
}

EarlyExit complaint(const std::string& text, const CommandSyntax* command) {
    const auto who = command ? std::string(command->name) + ": " : std::string();
    return {wrongUsage, "tidwen: " + who + printable(text) + "\n" + help::usage(command)};
}

std::optional<EarlyExit> wrongOperandCount(const CommandSyntax& syntax,
                                           const std::vector<std::string>& operands) {
    if (operands.size() < syntax.minimumOperands)
        return complaint(std::string(syntax.operandName) + " is missing", &syntax);
    if (operands.size() > syntax.maximumOperands)
        return complaint("too many arguments: " + operands[syntax.maximumOperands], &syntax);
    return std::nullopt;
}

/// The refusal of a flag that was given a value, and of "--volume=", as a script writes it whose variable is
/// empty. The parser takes "--yes=false" and "--yes=" for "--yes".
std::optional<EarlyExit> wrongValue(const char* const* word, const char* const* end,
                                    const std::vector<CommandSyntax>& commands) {
    const CommandSyntax* command = nullptr;
    for (; word != end; ++word) {
        const std::string_view text(*word);
        if (!text.starts_with('-')) {
            if (!command) command = find(commands, text);
            continue;
        }
        const auto name = text.substr(0, text.find('='));
        const bool hasValue = name.size() < text.size();
        const auto* option = findOption(command, name == "-h" ? "--help" : name);
        if (!option) continue;
        if (option->valueName.empty() && hasValue)
            return complaint(std::string(name) + " takes no value", command);
        const bool isCutOff = !hasValue && word + 1 == end;
        if (!option->valueName.empty() && (isCutOff || text.size() == name.size() + 1))
            return complaint(std::string(name) + " needs a value", command);
        if (!option->valueName.empty() && !hasValue && word + 1 != end) ++word; // its value, whatever it is
    }
    return std::nullopt;
}

/// Why parsing ended early. `command` is the one that was named, if any.
EarlyExit endOf(const CLI::ParseError& error, const CLI::App& app, const CommandSyntax* command,
                const std::vector<CommandSyntax>& commands) {
    if (app.count("--version") > 0) return {0, "tidwen " TIDWEN_VERSION "\n"};
    const auto unexpected = app.remaining(true);
    const auto isOption = [](const std::string& word) { return word.starts_with('-'); };
    if (!command && !unexpected.empty() && !isOption(unexpected.front()))
        return complaint("there is no command " + unexpected.front(), nullptr);
    if (dynamic_cast<const CLI::CallForHelp*>(&error))
        return {0, command ? help::command(*command) : help::program(commands)};
    // The parser takes a command's own option only behind it.
    if (command && !unexpected.empty() && findOption(command, unexpected.front()))
        return complaint(unexpected.front() + " stands behind the command", command);
    if (dynamic_cast<const CLI::ExtrasError*>(&error) && !unexpected.empty())
        return complaint((isOption(unexpected.front()) ? "there is no option " : "too many arguments: ")
                             + unexpected.front(),
                         command);
    return complaint(error.what(), command);
}

} // namespace

std::string_view programVersion() {
    return TIDWEN_VERSION;
}

std::vector<std::string> Arguments::values(std::string_view option) const {
    const auto found = options.find(option);
    return found == options.end() ? std::vector<std::string>{} : found->second;
}

namespace {

/// "help" and "help COMMAND", as in most programs.
std::optional<EarlyExit> helpFor(int count, const char* const* words,
                                 const std::vector<CommandSyntax>& commands) {
    if (count < 2 || std::string_view(words[1]) != "help") return std::nullopt;
    if (count == 2) return EarlyExit{0, help::program(commands)};
    const auto* command = find(commands, words[2]);
    if (!command) return complaint("there is no command " + std::string(words[2]), nullptr);
    return EarlyExit{0, help::command(*command)};
}

} // namespace

tl::expected<Arguments, EarlyExit> parseArguments(int count, const char* const* words,
                                                  const std::vector<CommandSyntax>& commands) {
    Arguments result;
    result.program = count > 0 ? words[0] : "tidwen";
    if (auto help = helpFor(count, words, commands)) return tl::unexpected(std::move(*help));
    CLI::App app("", "tidwen");
    app.set_help_flag("-h,--help");
    app.require_subcommand(0, 1);
    app.fallthrough();
    for (const auto& option : help::globalOptions())
        if (option.name != "--help") declare(app, option);
    for (const auto& syntax : commands) {
        auto* command = app.add_subcommand(std::string(syntax.name));
        // Too few or too many operands are told by us, so that those behind "--" count too.
        if (!syntax.operandName.empty())
            command->add_option(std::string(syntax.operandName), result.operands);
        for (const auto& option : syntax.options)
            declare(*command, option);
    }

    const auto namedCommand = [&]() -> const CommandSyntax* {
        const auto named = app.get_subcommands();
        return named.empty() ? nullptr : find(commands, named.front()->get_name());
    };
    // All behind "--" are operands; the parser itself would give them to the wrong command.
    const auto* const end = words + count;
    const auto* const mark = std::find_if(words, end, [](std::string_view word) { return word == "--"; });
    if (auto wrong = wrongValue(words + std::min(count, 1), mark, commands))
        return tl::unexpected(std::move(*wrong));
    try {
        app.parse(static_cast<int>(mark - words), words);
    } catch (const CLI::ParseError& error) {
        return tl::unexpected(endOf(error, app, namedCommand(), commands));
    }
    const CommandSyntax* command = namedCommand();
    if (app.count("--version") > 0) return tl::unexpected(EarlyExit{0, "tidwen " TIDWEN_VERSION "\n"});
    if (!command && mark != end) return tl::unexpected(complaint("the command is missing", nullptr));
    if (!command) return tl::unexpected(EarlyExit{wrongUsage, help::program(commands)});
    if (mark != end) result.operands.insert(result.operands.end(), mark + 1, end);
    if (auto wrong = wrongOperandCount(*command, result.operands)) return tl::unexpected(std::move(*wrong));
    result.command = command->name;
    readGlobalOptions(app, result);
    for (const auto& option : command->options)
        if (auto values = given(*app.get_subcommand(result.command), option))
            result.options[std::string(option.name)] = std::move(*values);
    return result;
}

} // namespace tidwen

#include "cli/command.h"
#include "cli/console.h"
#include "cli/help.h"
#include "operations/admin_batch.h"

#include <fmt/core.h>
#include <sstream>

namespace tidwen {

namespace {

// Made from the table that also parses the command line, so that they know every command of this program.

std::vector<CommandSyntax> commandTable() {
    std::vector<CommandSyntax> table;
    for (const auto& command : allCommands())
        table.push_back(command.syntax);
    return table;
}

template<class List, class Name>
std::string joined(const List& list, std::string_view between, const Name& name) {
    std::string text;
    for (const auto& element : list)
        text += (text.empty() ? "" : std::string(between)) + std::string(name(element));
    return text;
}

constexpr auto nameOf = [](const auto& named) { return named.name; };
constexpr auto itself = [](std::string_view word) { return word; };

std::string shellQuoted(std::string_view text) {
    return adminBatch::quoted(std::string(text));
}

/// "name|size" → "name size"; empty when any value may stand there.
std::string fixedValues(const OptionSyntax& option) {
    std::string values(option.valueName);
    if (values.find('|') == std::string::npos) return {};
    for (auto& letter : values)
        if (letter == '|') letter = ' ';
    return values;
}

/// Options that take a value, each once.
std::vector<OptionSyntax> optionsWithValue(const std::vector<CommandSyntax>& commands) {
    std::vector<OptionSyntax> result;
    const auto add = [&](const std::vector<OptionSyntax>& options) {
        for (const auto& option : options) {
            bool isNew = !option.valueName.empty();
            for (const auto& known : result)
                isNew = isNew && known.name != option.name;
            if (isNew) result.push_back(option);
        }
    };
    add(help::globalOptions());
    for (const auto& command : commands)
        add(command.options);
    return result;
}

/// The branches that complete the value of the option before the cursor. `folders` and `words` are what the
/// shell calls to offer folders and the words behind.
std::string valueCases(const std::vector<CommandSyntax>& commands, std::string_view folders,
                       std::string_view words, std::string_view wordsEnd) {
    std::string text;
    for (const auto& option : optionsWithValue(commands)) {
        std::string offer;
        if (option.valueName == "DIR")
            offer = std::string(folders) + "; ";
        else if (const auto values = fixedValues(option); !values.empty())
            offer = fmt::format("{}{}{}; ", words, values, wordsEnd);
        text += fmt::format("    {}) {}return ;;\n", option.name, offer);
    }
    return text;
}

/// Names may hold spaces, so each line is one. The bash of macOS has no compopt.
constexpr std::string_view bashFolders =
    R"(local IFS=$'\n'; compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -d -- "$word")))";

std::string bash(const std::vector<CommandSyntax>& commands) {
    std::string cases;
    for (const auto& command : commands)
        cases += fmt::format("    {}) options=\"$options {}\"; actions='{}' ;;\n", command.name,
                             joined(command.options, " ", nameOf), joined(command.actions, " ", itself));
    return fmt::format(
        R"(_tidwen() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} command= actions= i
    local options='{}'
    COMPREPLY=()
    case ${{COMP_WORDS[COMP_CWORD-1]}} in
{}    esac
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${{COMP_WORDS[i]}} in
        {}) ((++i)) ;;
        -*) ;;
        *) command=${{COMP_WORDS[i]}}; break ;;
        esac
    done
    case $command in
    '') actions='{}'; ((i = COMP_CWORD - 1)) ;;
{}    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$word"))
    elif ((i == COMP_CWORD - 1)); then
        COMPREPLY=($(compgen -W "$actions" -- "$word"))
    fi
}}
complete -o default -F _tidwen tidwen
)",
        joined(help::globalOptions(), " ", nameOf),
        valueCases(commands, bashFolders, "COMPREPLY=($(compgen -W '", R"(' -- "$word")))"),
        joined(optionsWithValue(commands), "|", nameOf), joined(commands, " ", nameOf), cases);
}

std::string zsh(const std::vector<CommandSyntax>& commands) {
    const auto described = [](const auto& named, std::string_view text) {
        return shellQuoted(fmt::format("{}:{}", named.name, text));
    };
    const auto options = [&](const std::vector<OptionSyntax>& list) {
        return joined(list, " ", [&](const OptionSyntax& option) { return described(option, option.help); });
    };
    std::string cases;
    for (const auto& command : commands)
        cases += fmt::format("    {}) options+=({}); actions=({}) ;;\n", command.name,
                             options(command.options), joined(command.actions, " ", itself));
    const auto names = joined(
        commands, " ", [&](const CommandSyntax& command) { return described(command, command.summary); });
    return fmt::format(
        R"(#compdef tidwen
_tidwen() {{
    local command= i
    local -a options actions
    options=({})
    case $words[CURRENT-1] in
{}    esac
    for ((i = 2; i < CURRENT; i++)); do
        case $words[i] in
        {}) ((++i)) ;;
        -*) ;;
        *) command=$words[i]; break ;;
        esac
    done
    case $command in
    '') actions=({}); ((i = CURRENT - 1)) ;;
{}    esac
    if [[ $words[CURRENT] == -* ]]; then
        _describe option options
    elif ((i == CURRENT - 1 && $#actions)); then
        _describe word actions
    else
        _files
    fi
}}
if [[ $funcstack[1] == _tidwen ]]; then _tidwen "$@"; else compdef _tidwen tidwen; fi
)",
        options(help::globalOptions()), valueCases(commands, "_files -/", "compadd -- ", ""),
        joined(optionsWithValue(commands), "|", nameOf), names, cases);
}

std::string fishOption(const OptionSyntax& option, const std::string& condition) {
    std::string value;
    if (option.valueName == "DIR")
        value = " -x -a '(__fish_complete_directories)'";
    else if (!option.valueName.empty())
        value = " -x" + (fixedValues(option).empty() ? "" : " -a " + shellQuoted(fixedValues(option)));
    return fmt::format("complete -c tidwen{} -l {}{} -d {}\n", condition, option.name.substr(2), value,
                       shellQuoted(option.help));
}

std::string fish(const std::vector<CommandSyntax>& commands) {
    const auto seen = [](std::string_view words) {
        return fmt::format("__fish_seen_subcommand_from {}", words);
    };
    std::string text;
    for (const auto& option : help::globalOptions())
        text += fishOption(option, "");
    for (const auto& command : commands) {
        text += fmt::format("complete -c tidwen -f -n 'not {}' -a {} -d {}\n",
                            seen(joined(commands, " ", nameOf)), command.name, shellQuoted(command.summary));
        for (const auto& option : command.options)
            text += fishOption(option, fmt::format(" -n '{}'", seen(command.name)));
        if (command.operandName.empty())
            text += fmt::format("complete -c tidwen -f -n '{}'\n", seen(command.name));
        const auto actions = joined(command.actions, " ", itself);
        if (!actions.empty())
            text += fmt::format("complete -c tidwen -f -n '{}; and not {}' -a '{}'\n", seen(command.name),
                                seen(actions), actions);
    }
    return text;
}

ExitStatus run(const CommandContext& context) {
    const auto& shell = context.arguments.operands.front();
    const auto commands = commandTable();
    std::string script;
    if (shell == "bash")
        script = bash(commands);
    else if (shell == "zsh")
        script = zsh(commands);
    else if (shell == "fish")
        script = fish(commands);
    else
        return context.refuse({"cli.completions.unknown %@", {shell}});
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);)
        context.console.line(line);
    return ExitStatus::done;
}

} // namespace

Command completionsCommand() {
    return {.syntax = {.name = "completions",
                       .summary = "Print a script that completes commands and options in a shell",
                       .operandName = "SHELL",
                       .operandHelp = "bash, zsh or fish",
                       .minimumOperands = 1,
                       .maximumOperands = 1,
                       .actions = {"bash", "zsh", "fish"}},
            .run = run};
}

} // namespace tidwen

#include "base/shell_word.h"
#include "base/texts.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/help.h"

#include <algorithm>
#include <fmt/core.h>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

namespace {

// Generated from the command table, so that they are complete. For words that depend on the disk or the
// settings the scripts call `complete`.

std::vector<CommandSyntax> commandTable() {
    std::vector<CommandSyntax> table;
    for (const auto& command : allCommands())
        if (!command.syntax.isHidden) table.push_back(command.syntax);
    CommandSyntax help{.name = "help", .summary = "cli.help.help", .operandName = "COMMAND"};
    help.actions.reserve(table.size());
    for (const auto& command : table)
        help.actions.push_back({command.name, command.summary});
    table.push_back(std::move(help));
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
    return shellWord(std::string(text));
}

/// "name|size" → "name size"; empty if any value is allowed.
std::string fixedValues(std::string_view form) {
    std::string values(form);
    if (values.find('|') == std::string::npos) return {};
    for (auto& letter : values)
        if (letter == '|') letter = ' ';
    return values;
}

/// The operand names in a form: "add APP TAG" → "APP TAG", "[RUN...]" → "RUN...".
std::string placesOf(std::string_view form) {
    std::string places;
    for (const char letter : form)
        if (letter != '[' && letter != ']') places += letter;
    return places;
}

std::string placesOfAction(std::string_view form) {
    const auto end = form.find(' ');
    return end == form.npos ? std::string() : placesOf(form.substr(end + 1));
}

/// Options that take a value, without duplicates.
std::vector<OptionSyntax> optionsWithValue(const std::vector<CommandSyntax>& commands) {
    std::vector<OptionSyntax> result;
    const auto add = [&](const std::vector<OptionSyntax>& options) {
        for (const auto& option : options) {
            const bool isKnown = std::ranges::find(result, option.name, &OptionSyntax::name) != result.end();
            if (!option.valueName.empty() && !isKnown) result.push_back(option);
        }
    };
    add(help::globalOptions());
    for (const auto& command : commands)
        add(command.options);
    return result;
}

/// The cases for the operands of a command or of one of its actions.
std::string placeCases(const std::vector<CommandSyntax>& commands) {
    std::string text;
    for (const auto& command : commands) {
        for (const auto& [form, meaning] : command.actions)
            text += fmt::format("    {}/{}) places={} ;;\n", command.name, form.substr(0, form.find(' ')),
                                shellQuoted(placesOfAction(form)));
        if (command.actions.empty())
            text += fmt::format("    {}/*) places={} ;;\n", command.name,
                                shellQuoted(placesOf(help::operands(command))));
    }
    return text;
}

/// The cases for the value of the option before the cursor; a fixed list counts as one place.
std::string optionCases(const std::vector<CommandSyntax>& commands) {
    std::string text;
    for (const auto& option : optionsWithValue(commands))
        text += fmt::format("    {}) place={} ;;\n", option.name, shellQuoted(option.valueName));
    return text;
}

std::string otherOptionsWithValue(const std::vector<CommandSyntax>& commands) {
    return joined(optionsWithValue(commands), "|", nameOf);
}

std::string bash(const std::vector<CommandSyntax>& commands) {
    std::string cases;
    for (const auto& command : commands)
        cases +=
            fmt::format("    {}) options=\"$options {}\"; actions='{}' ;;\n", command.name,
                        joined(command.options, " ", nameOf), joined(command.actionWords(), " ", itself));
    return fmt::format(
        R"sh(_tidwen_place() {{
    local line
    case $1 in
    DIR) local IFS=$'\n'; compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -d -- "$word")) ;;
    *\|*) COMPREPLY=($(compgen -W "${{1//|/ }}" -- "$word")) ;;
    APP|RUN|JOB|NAME|VALUE|TAG|TIERS)
        while IFS= read -r line; do
            line=${{line%%$'\t'*}}
            [[ $line == "${{word//\\/}}"* ]] && COMPREPLY+=("$(printf %q "$line")")
        done < <("${{COMP_WORDS[0]}}" ${{mac[@]+"${{mac[@]}}"}} complete "$@" 2>/dev/null) ;;
    esac
}}
_tidwen() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} command= actions= place= places= value i
    local options='{}'
    local -a mac=() operands=() list=()
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${{COMP_WORDS[i]}} in
        --volume|--home)
            value=${{COMP_WORDS[i+1]//\\/}}
            mac+=("${{COMP_WORDS[i]}}" "${{value/#\~/$HOME}}"); ((++i)) ;;
        {}) ((++i)) ;;
        -*) ;;
        *) if [[ $command ]]; then operands+=("${{COMP_WORDS[i]}}"); else command=${{COMP_WORDS[i]}}; fi ;;
        esac
    done
    case ${{COMP_WORDS[COMP_CWORD-1]}} in
{}    esac
    if [[ $place ]]; then _tidwen_place "$place"; return; fi
    case $command in
    '') actions='{}' ;;
{}    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$word"))
        return
    fi
    i=${{#operands[@]}}
    if [[ $actions ]] && {{ [[ ! $command ]] || ((i-- == 0)); }}; then
        COMPREPLY=($(compgen -W "$actions" -- "$word"))
        return
    fi
    case $command/${{operands[0]}} in
{}    esac
    list=($places)
    place=${{list[i]}}
    if [[ ! $place && $places == *... ]]; then place=${{list[${{#list[@]}}-1]}}; fi
    value=
    if ((${{#operands[@]}})); then value=${{operands[${{#operands[@]}}-1]}}; fi
    _tidwen_place "${{place%...}}" "$value"
}}
complete -o default -F _tidwen tidwen
)sh",
        joined(help::globalOptions(), " ", nameOf), otherOptionsWithValue(commands), optionCases(commands),
        joined(commands, " ", nameOf), cases, placeCases(commands));
}

std::string zsh(const std::vector<CommandSyntax>& commands, const Texts& texts) {
    const auto described = [&](const auto& named, std::string_view key) {
        return shellQuoted(fmt::format("{}:{}", named.name, texts.text(key)));
    };
    const auto options = [&](const std::vector<OptionSyntax>& list) {
        return joined(list, " ", [&](const OptionSyntax& option) { return described(option, option.help); });
    };
    std::string cases;
    for (const auto& command : commands)
        cases += fmt::format("    {}) options+=({}); actions=({}) ;;\n", command.name,
                             options(command.options), joined(command.actionWords(), " ", itself));
    const auto names = joined(
        commands, " ", [&](const CommandSyntax& command) { return described(command, command.summary); });
    return fmt::format(
        R"sh(#compdef tidwen
_tidwen_place() {{
    local -a values
    case $1 in
    DIR) _files -/ ;;
    *\|*) compadd -- ${{(s:|:)1}} ;;
    APP|RUN|JOB|NAME|VALUE|TAG|TIERS)
        values=(${{(f)"$($words[1] $mac complete "$@" 2>/dev/null)"}})
        values=("${{(@)values//:/\\:}}")
        values=("${{(@)values/$'\t'/:}}")
        _describe value values ;;
    *) _files ;;
    esac
}}
_tidwen() {{
    local command= place= places= i
    local -a options actions mac operands list
    options=({})
    for ((i = 2; i < CURRENT; i++)); do
        case $words[i] in
        --volume|--home) mac+=($words[i] ${{~${{(Q)words[i+1]}}}}); ((++i)) ;;
        {}) ((++i)) ;;
        -*) ;;
        *) if [[ -n $command ]]; then operands+=(${{(Q)words[i]}}); else command=$words[i]; fi ;;
        esac
    done
    case $words[CURRENT-1] in
{}    esac
    if [[ -n $place ]]; then _tidwen_place $place; return; fi
    case $command in
    '') actions=({}) ;;
{}    esac
    i=$#operands
    if [[ $words[CURRENT] == -* ]]; then
        _describe option options
    elif (($#actions)) && {{ [[ -z $command ]] || ((i-- == 0)) }}; then
        _describe word actions
    else
        case $command/${{operands[1]}} in
{}        esac
        list=(${{=places}})
        place=${{list[i+1]}}
        if [[ -z $place && $places == *... ]]; then place=$list[-1]; fi
        _tidwen_place "${{place%...}}" "${{operands[-1]}}"
    fi
}}
if [[ $funcstack[1] == _tidwen ]]; then _tidwen "$@"; else compdef _tidwen tidwen; fi
)sh",
        options(help::globalOptions()), otherOptionsWithValue(commands), optionCases(commands), names, cases,
        placeCases(commands));
}

/// The argument of fish's "-a" for places of these kinds; empty: only files.
std::string fishOffer(const std::string& places) {
    std::string offer;
    std::istringstream words(places);
    for (std::string place; words >> place;) {
        if (place.ends_with("...")) place.resize(place.size() - 3);
        if (place == "DIR")
            offer += "(__fish_complete_directories) ";
        else if (const auto values = fixedValues(place); !values.empty())
            offer += values + " ";
        else if (place != "PATH" && place != "TEXT" && !place.starts_with("ITEM") && place != "SERVICE"
                 && place != "NEW")
            offer += "(__tidwen_place " + place + ") ";
    }
    return offer;
}

std::string fishOption(const OptionSyntax& option, const std::string& condition, const Texts& texts) {
    std::string value;
    if (!option.valueName.empty()) {
        const auto offer = fishOffer(std::string(option.valueName));
        value = " -x" + (offer.empty() ? "" : " -a " + shellQuoted(offer));
    }
    return fmt::format("complete -c tidwen{} -l {}{} -d {}\n", condition, option.name.substr(2), value,
                       shellQuoted(texts.text(option.help)));
}

constexpr std::string_view fishPlace = R"sh(function __tidwen_place
    set -l mac
    set -l words (commandline -opc)
    for i in (seq 2 (count $words))
        contains -- $words[$i] --volume --home; and set -a mac $words[$i] $words[(math $i + 1)]
    end
    $words[1] $mac complete $argv $words[-1] 2>/dev/null
end
)sh";

std::string fish(const std::vector<CommandSyntax>& commands, const Texts& texts) {
    const auto seen = [](std::string_view words) {
        return fmt::format("__fish_seen_subcommand_from {}", words);
    };
    std::string text(fishPlace);
    for (const auto& option : help::globalOptions())
        text += fishOption(option, "", texts);
    for (const auto& command : commands) {
        text += fmt::format("complete -c tidwen -f -n 'not {}' -a {} -d {}\n",
                            seen(joined(commands, " ", nameOf)), command.name,
                            shellQuoted(texts.text(command.summary)));
        for (const auto& option : command.options)
            text += fishOption(option, fmt::format(" -n '{}'", seen(command.name)), texts);
        const auto actions = joined(command.actionWords(), " ", itself);
        if (actions.empty())
            text += fmt::format("complete -c tidwen -f -n '{}' -a {}\n", seen(command.name),
                                shellQuoted(fishOffer(placesOf(help::operands(command)))));
        else
            text += fmt::format("complete -c tidwen -f -n '{}; and not {}' -a '{}'\n", seen(command.name),
                                seen(actions), actions);
        for (const auto& [form, meaning] : command.actions)
            text += fmt::format("complete -c tidwen -f -n '{}; and {}' -a {}\n", seen(command.name),
                                seen(form.substr(0, form.find(' '))),
                                shellQuoted(fishOffer(placesOfAction(form))));
    }
    return text;
}

ExitStatus runCompletions(const CommandContext& context) {
    const auto& shell = context.arguments.operands.front();
    const auto commands = commandTable();
    std::string script;
    if (shell == "bash")
        script = bash(commands);
    else if (shell == "zsh")
        script = zsh(commands, context.texts);
    else if (shell == "fish")
        script = fish(commands, context.texts);
    else
        return context.misuse({"cli.completions.unknown %@", {shell}});

    context.console.document(script);
    return ExitStatus::done;
}

} // namespace

Command completionsCommand() {
    return {.syntax = {.name = "completions",
                       .summary = "cli.help.completions",
                       .operandName = "SHELL",
                       .minimumOperands = 1,
                       .maximumOperands = 1,
                       .actions = {{"bash", "cli.help.completions.bash"},
                                   {"zsh", "cli.help.completions.zsh"},
                                   {"fish", "cli.help.completions.fish"}}},
            .run = runCompletions};
}

} // namespace tidwen

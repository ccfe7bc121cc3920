#include "cli/help.h"

#include <algorithm>
#include <fmt/core.h>
#include <utility>

namespace tidwen::help {

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string rendered(const char* title, const Rows& rows) {
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, row.first.size());
    std::string text = "\n" + std::string(title) + ":\n";
    for (const auto& [term, meaning] : rows)
        text += fmt::format("  {:<{}}  {}\n", term, width, meaning);
    return text;
}

std::string term(const OptionSyntax& option) {
    std::string text(option.name);
    if (!option.valueName.empty()) text += " " + std::string(option.valueName);
    return text;
}

Rows rows(const std::vector<OptionSyntax>& options) {
    Rows result;
    for (const auto& option : options)
        result.emplace_back(term(option), option.help);
    return result;
}

std::string operandTerm(const CommandSyntax& syntax) {
    if (syntax.operandName.empty()) return {};
    const auto name = std::string(syntax.operandName) + (syntax.maximumOperands > 1 ? "..." : "");
    return syntax.minimumOperands > 0 ? name : "[" + name + "]";
}

/// "list, on JOB…" → "list | on JOB…": the actions of a command, each with its operands.
std::string actionTerm(const CommandSyntax& syntax) {
    std::string text(syntax.operandHelp);
    for (std::size_t at = 0; (at = text.find(", ", at)) != std::string::npos; at += 3)
        text.replace(at, 2, " | ");
    return text;
}

std::string call(const CommandSyntax& syntax) {
    const auto operands = syntax.actions.empty() ? operandTerm(syntax) : actionTerm(syntax);
    return "Usage: tidwen " + std::string(syntax.name) + " [OPTION...]"
           + (operands.empty() ? "" : " " + operands) + "\n";
}

} // namespace

const std::vector<OptionSyntax>& globalOptions() {
    static const std::vector<OptionSyntax> options = {
        {"--volume", "DIR", "Work on the folder DIR, which is laid out like a Mac's disk"},
        {"--home", "PATH", "The home folder to look into when that Mac has several (\"/Users/alice\")"},
        {"--json", "", "Print one JSON document for programs"},
        {"--yes", "", "Answer every question with yes"},
        {"--verbose", "", "Print the log on standard error, not its errors alone"},
        {"--version", "", "Print the version and exit"},
        {"--help", "", "Print this help and exit; -h does the same"},
    };
    return options;
}

std::string program(const std::vector<CommandSyntax>& commands) {
    Rows summaries;
    for (const auto& syntax : commands)
        summaries.emplace_back(std::string(syntax.name) + " " + operandTerm(syntax), syntax.summary);
    return "Takes an application off a Mac with everything it left behind, and can put back what it moved.\n"
           "\nUsage: tidwen [OPTION...] COMMAND [ARGUMENT...]\n"
           + rendered("Commands", summaries)
           + rendered("Options, before the command or after it", rows(globalOptions()))
           + "\n\"tidwen help COMMAND\" says more about one command.\n";
}

std::string usage(const CommandSyntax* syntax) {
    if (!syntax) return "Usage: tidwen [OPTION...] COMMAND [ARGUMENT...]\nTry \"tidwen help\".\n";
    return call(*syntax) + "Try \"tidwen help " + std::string(syntax->name) + "\".\n";
}

std::string command(const CommandSyntax& syntax) {
    std::string text = std::string(syntax.summary) + ".\n\n" + call(syntax);
    if (!syntax.operandName.empty())
        text += rendered("Arguments", {{std::string(syntax.operandName), std::string(syntax.operandHelp)}});
    if (!syntax.options.empty()) text += rendered("Options of this command", rows(syntax.options));
    return text + rendered("Options of every command", rows(globalOptions()));
}

} // namespace tidwen::help

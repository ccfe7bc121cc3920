#include "cli/help.h"

#include "base/text.h"
#include "base/texts.h"

#include <algorithm>
#include <utility>

namespace tidwen::help {

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string rendered(const std::string& title, const Rows& rows, const Texts& texts) {
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, displayWidth(row.first));
    std::string text = "\n" + texts.text("cli.help.heading %@", {texts.text(title)}) + "\n";
    for (const auto& [term, meaning] : rows)
        text += "  " + term + std::string(width - displayWidth(term), ' ')
                + (meaning.empty() ? "" : "  " + meaning) + "\n";
    return text;
}

std::string term(const OptionSyntax& option) {
    std::string text(option.name);
    if (!option.valueName.empty()) text += " " + std::string(option.valueName);
    return text;
}

Rows rows(const std::vector<OptionSyntax>& options, const Texts& texts) {
    Rows result;
    for (const auto& option : options)
        result.emplace_back(term(option), texts.text(option.help));
    return result;
}

std::string actionTerm(const CommandSyntax& syntax) {
    std::string text;
    for (const auto& action : syntax.actions)
        text += (text.empty() ? "" : " | ") + std::string(action.form);
    return text;
}

std::string call(const CommandSyntax& syntax, const Texts& texts) {
    const auto behind = syntax.actions.empty() ? operands(syntax) : actionTerm(syntax);
    const auto words =
        "tidwen " + std::string(syntax.name) + " [OPTION...]" + (behind.empty() ? "" : " " + behind);
    return texts.text("cli.help.usage %@", {words}) + "\n";
}

std::string call(const Texts& texts) {
    return texts.text("cli.help.usage %@", {"tidwen [OPTION...] COMMAND [ARGUMENT...]"}) + "\n";
}

std::string operandHelp(const CommandSyntax& syntax, const Texts& texts) {
    Rows rows;
    for (const auto& action : syntax.actions)
        rows.emplace_back(std::string(action.form), texts.text(action.help));
    if (!rows.empty()) return rendered("cli.help.actions", rows, texts);
    if (syntax.operandName.empty()) return {};
    return rendered("cli.help.arguments", {{operands(syntax), texts.text(syntax.operandHelp)}}, texts);
}

std::string statuses(const Texts& texts) {
    return rendered("cli.help.statuses",
                    {{"0", texts.text("cli.help.status.done")},
                     {"1", texts.text("cli.help.status.someFailed")},
                     {"2", texts.text("cli.help.status.refused")}},
                    texts);
}

} // namespace

std::string operands(const CommandSyntax& syntax) {
    if (syntax.operandName.empty()) return {};
    if (!syntax.operandForm.empty()) return std::string(syntax.operandForm);
    const auto name = std::string(syntax.operandName) + (syntax.maximumOperands > 1 ? "..." : "");
    return syntax.minimumOperands > 0 ? name : "[" + name + "]";
}

const std::vector<OptionSyntax>& globalOptions() {
    static const std::vector<OptionSyntax> options = {
        {"--volume", "DIR", "cli.help.option.volume"}, {"--home", "PATH", "cli.help.option.home"},
        {"--json", "", "cli.help.option.json"},        {"--yes", "", "cli.help.option.yes"},
        {"--quiet", "", "cli.help.option.quiet"},      {"--verbose", "", "cli.help.option.verbose"},
        {"--version", "", "cli.help.option.version"},  {"--help", "", "cli.help.option.help"},
    };
    return options;
}

std::string program(const std::vector<CommandSyntax>& commands, const Texts& texts) {
    Rows summaries;
    for (const auto& syntax : commands)
        if (!syntax.isHidden)
            summaries.emplace_back(std::string(syntax.name) + " " + operands(syntax),
                                   texts.text(syntax.summary));
    summaries.emplace_back("help [COMMAND]", texts.text("cli.help.help"));
    return texts.text("cli.help.program") + "\n\n" + call(texts)
           + rendered("cli.help.commands", summaries, texts)
           + rendered("cli.help.globalOptions", rows(globalOptions(), texts), texts)
           + rendered("cli.help.environment", {{volumeVariable, texts.text("cli.help.environment.volume")}},
                      texts)
           + statuses(texts) + "\n" + texts.text("cli.help.more") + "\n";
}

std::string usage(const CommandSyntax* syntax, const Texts& texts) {
    const auto more = syntax ? "tidwen help " + std::string(syntax->name) : std::string("tidwen help");
    return (syntax ? call(*syntax, texts) : call(texts)) + texts.text("cli.help.try %@", {more}) + "\n";
}

std::string command(const CommandSyntax& syntax, const Texts& texts) {
    std::string text = texts.text("cli.help.sentence %@", {texts.text(syntax.summary)}) + "\n\n"
                       + call(syntax, texts) + operandHelp(syntax, texts);
    if (!syntax.options.empty()) text += rendered("cli.help.ownOptions", rows(syntax.options, texts), texts);
    return text + rendered("cli.help.everyOptions", rows(globalOptions(), texts), texts) + statuses(texts);
}

} // namespace tidwen::help

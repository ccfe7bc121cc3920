#include "cli/command.h"

#include "cli/console.h"
#include "cli/help.h"
#include "operations/admin_batch.h"

#include <algorithm>

namespace tidwen {

namespace {

std::string quotedIfNeeded(const std::string& word) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./-+=:,@%";
    return !word.empty() && word.find_first_not_of(plain) == std::string::npos ? word
                                                                               : adminBatch::quoted(word);
}

std::optional<CommandSyntax> syntaxOf(const std::string& command) {
    for (const auto& each : allCommands())
        if (each.syntax.name == command) return each.syntax;
    return std::nullopt;
}

} // namespace

ExitStatus CommandContext::refuse(const Message& reason) const {
    console.complain(texts.text(reason));
    return ExitStatus::refused;
}

ExitStatus CommandContext::misuse(const Message& reason) const {
    console.complain(texts.text(reason));
    Console errors = console.onErrors();
    const auto syntax = syntaxOf(arguments.command);
    errors.document(help::usage(syntax ? &*syntax : nullptr));
    return ExitStatus::refused;
}

ExitStatus CommandContext::misuseOfAction(const std::string& action) const {
    const auto syntax = syntaxOf(arguments.command);
    const bool isKnown =
        syntax && std::ranges::find(syntax->actions, std::string_view(action)) != syntax->actions.end();
    return misuse(isKnown ? Message{"cli.action.wrongOperands %@ %@", {arguments.command, action}}
                          : Message{"cli.action.unknown %@", {action}});
}

std::string CommandContext::commandLine(const std::vector<std::string>& words) const {
    std::string line = quotedIfNeeded(arguments.program);
    if (arguments.volume) line += " --volume " + quotedIfNeeded(arguments.volume->string());
    if (arguments.home) line += " --home " + quotedIfNeeded(*arguments.home);
    for (const auto& word : words)
        line += " " + quotedIfNeeded(word);
    return line;
}

} // namespace tidwen

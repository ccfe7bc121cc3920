#include "cli/command.h"

#include "base/message.h"
#include "base/shell_word.h"
#include "cli/console.h"
#include "cli/help.h"
#include "cli/suggestion.h"

#include <algorithm>
#include <optional>
#include <string>

namespace tidwen {

namespace {

std::string quotedIfNeeded(const std::string& word) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./-+=:,@%";
    return !word.empty() && word.find_first_not_of(plain) == std::string::npos ? word : shellWord(word);
}

std::optional<CommandSyntax> syntaxOf(const std::string& command) {
    for (const auto& each : allCommands())
        if (each.syntax.name == command) return each.syntax;
    return std::nullopt;
}

} // namespace

void CommandContext::error(const Message& what) const {
    console.error(texts.text(what), what.key);
}

void CommandContext::report(const Problem& what) const {
    console.error(what.text(texts), what.reason.key);
}

void CommandContext::offer(std::string_view key, const std::string& command) const {
    console.offer(text(key, {command}), command);
}

void CommandContext::offer(const std::string& command) const {
    console.offer("  " + command, command);
}

void CommandContext::advise(Message what, const std::string& command) const {
    what.arguments.emplace_back(command);
    console.advise(texts.text(what), command, what.key);
}

ExitStatus CommandContext::refuse(const Message& reason, const std::optional<std::string>& meant) const {
    auto line = texts.text(reason);
    if (meant) line = text("cli.sentences %@ %@", {line, text("cli.didYouMean %@", {*meant})});
    console.error(line, reason.key);
    return ExitStatus::refused;
}

ExitStatus CommandContext::misuse(const Message& reason, const std::optional<std::string>& meant) const {
    refuse(reason, meant);
    Console errors = console.onErrors();
    const auto syntax = syntaxOf(arguments.command);
    errors.wrapped(help::usage(syntax ? &*syntax : nullptr, texts));
    return ExitStatus::refused;
}

ExitStatus CommandContext::misuseOfAction(const std::string& action) const {
    const auto syntax = syntaxOf(arguments.command);
    std::vector<std::string> known;
    if (syntax)
        for (const auto& word : syntax->actionWords())
            known.emplace_back(word);
    if (const auto found = std::ranges::find(known, action); found != known.end()) {
        const auto index = static_cast<std::size_t>(found - known.begin());
        return misuse(
            {"cli.action.form %@ %@", {arguments.command, std::string(syntax->actions[index].form)}});
    }
    return misuse({"cli.action.unknown %@", {action}}, closest(action, known));
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

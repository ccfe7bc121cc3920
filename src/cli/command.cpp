#include "cli/command.h"

#include "cli/console.h"
#include "operations/admin_batch.h"

namespace tidwen {

namespace {

std::string quotedIfNeeded(const std::string& word) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./-+=:,@%";
    return !word.empty() && word.find_first_not_of(plain) == std::string::npos ? word
                                                                               : adminBatch::quoted(word);
}

} // namespace

ExitStatus CommandContext::refuse(const Message& reason) const {
    console.complain(texts.text(reason));
    return ExitStatus::refused;
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

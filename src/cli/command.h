#pragma once

#include "base/problem.h"
#include "cli/arguments.h"
#include "platform/https_fetcher.h"
#include "program/mac.h"

#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

class Console;

/// How the program ends.
enum class ExitStatus {
    done = 0,
    someFailed = 1, ///< the output says what
    refused = 2,    ///< refused or wrong usage; nothing was touched
};

/// This machine's user and the program itself, for commands that need no Mac.
struct Host {
    Defaults& defaults;
    Log& log;
    HttpsFetcher& fetcher;
    LoginItem& loginItem;
    std::string feedKey;     ///< the maker's public key that was built in; may be empty
    std::string feedAddress; ///< the feed that was built in; may be empty
};

struct CommandContext {
    const Arguments& arguments;
    const Texts& texts;
    Console& console;

    std::string text(std::string_view key, const std::vector<std::string>& fill = {}) const {
        return texts.text(key, fill);
    }
    /// Says what went wrong.
    void error(const Message& what) const;
    void report(const Problem& what) const;
    /// Says why nothing is done, and which word may have been `meant`.
    ExitStatus refuse(const Message& reason, const std::optional<std::string>& meant = {}) const;
    /// The same for a call that the command cannot make sense of; says how to call it.
    ExitStatus misuse(const Message& reason, const std::optional<std::string>& meant = {}) const;
    /// The same for the words of a command whose first one is an action: it is none, or cannot be called so.
    ExitStatus misuseOfAction(const std::string& action) const;
    /// How to call this program with a command's words on the same Mac, ready to be pasted into a shell.
    std::string commandLine(const std::vector<std::string>& words) const;
};

/// One command: how it is called and what it does. A new one is a file in `commands` and a line in
/// all_commands.cpp.
struct Command {
    using Anywhere = ExitStatus (*)(const CommandContext&);
    using OnHost = ExitStatus (*)(const CommandContext&, Host&);
    /// Needs no Mac, but uses the one that is named to resolve names on it.
    using OnHostAndMac = ExitStatus (*)(const CommandContext&, Host&, Mac*);
    using OnMac = ExitStatus (*)(const CommandContext&, Mac&);

    CommandSyntax syntax;
    std::variant<Anywhere, OnHost, OnHostAndMac, OnMac> run;
};

/// In the order in which help lists them.
std::vector<Command> allCommands();

} // namespace tidwen

#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/problem.h"
#include "base/texts.h"
#include "cli/arguments.h"
#include "platform/defaults.h"
#include "platform/https_fetcher.h"
#include "platform/login_item.h"
#include "program/mac.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

class Console;

/// The exit status of the program.
enum class ExitStatus {
    done = 0,
    someFailed = 1, ///< the output says which
    refused = 2,    ///< refused or wrong usage; nothing was changed
};

/// This machine's user and the program itself, for commands that work without a Mac.
struct Host {
    Defaults& defaults;
    Log& log;
    HttpsFetcher& fetcher;
    LoginItem& loginItem;
    std::string feedKey;     ///< the vendor's built-in public key; may be empty
    std::string feedAddress; ///< the built-in feed; may be empty
    bool isMac = false;      ///< it is a Mac, so a watch at login needs no volume
};

struct CommandContext {
    const Arguments& arguments;
    const Texts& texts;
    Console& console;

    std::string text(std::string_view key, const std::vector<std::string>& fill = {}) const {
        return texts.text(key, fill);
    }
    /// Prints an error.
    void error(const Message& what) const;
    void report(const Problem& what) const;
    /// Prints a text that ends with a command line to copy; `advise` prints it as an error, with the
    /// command as the last of the arguments.
    void offer(std::string_view key, const std::string& command) const;
    void offer(const std::string& command) const; ///< without words
    void advise(Message what, const std::string& command) const;
    /// Prints why nothing is done, and the word that was probably `meant`.
    ExitStatus refuse(const Message& reason, const std::optional<std::string>& meant = {}) const;
    /// The same for wrong usage; adds how to call the command.
    ExitStatus misuse(const Message& reason, const std::optional<std::string>& meant = {}) const;
    /// The same for a command whose first operand is an action: it is unknown, or has the wrong operands.
    ExitStatus misuseOfAction(const std::string& action) const;
    /// This program's command line for the same Mac with these words, quoted for a shell.
    std::string commandLine(const std::vector<std::string>& words) const;
};

/// One command: its syntax and its function. A new command is a file in `commands` and a line in
/// all_commands.cpp.
struct Command {
    using Anywhere = ExitStatus (*)(const CommandContext&);
    using OnHost = ExitStatus (*)(const CommandContext&, Host&);
    /// Needs no Mac, but uses the given one to resolve names.
    using OnHostAndMac = ExitStatus (*)(const CommandContext&, Host&, Mac*);
    using OnMac = ExitStatus (*)(const CommandContext&, Mac&);

    CommandSyntax syntax;
    std::variant<Anywhere, OnHost, OnHostAndMac, OnMac> run;
};

/// In the order in which help lists them.
std::vector<Command> allCommands();

} // namespace tidwen

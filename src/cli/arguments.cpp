#include "cli/arguments.h"

#include "base/text.h"
#include "cli/help.h"
#include "cli/suggestion.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace tidwen {

namespace {

constexpr int wrongUsage = 2;

CLI::Option* declare(CLI::App& app, const OptionSyntax& syntax) {
    const std::string name(syntax.name);
    if (syntax.valueName.empty()) return app.add_flag(name);
    // One value per option, so that it does not consume the operands after it.
    return app.add_option(name)
        ->type_name(std::string(syntax.valueName))
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
}

/// The values given for an option of `app`, empty for a flag; nullopt if it was not given.
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
    result.quiet = app.count("--quiet") > 0;
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

/// Creates the early exits of parsing.
class Exits {
  public:
    Exits(const std::vector<CommandSyntax>& commands, const Texts& texts)
        : commands_(commands), texts_(texts) {}

    EarlyExit wrong(const Message& reason, const CommandSyntax* command,
                    const std::optional<std::string>& meant = {}) const {
        auto text = texts_.text(reason);
        if (meant)
            text = texts_.text("cli.sentences %@ %@", {text, texts_.text("cli.didYouMean %@", {*meant})});
        return {wrongUsage, "tidwen: " + printable(text) + "\n" + help::usage(command, texts_), reason};
    }

    EarlyExit noCommand(const std::string& word) const {
        std::vector<std::string> names;
        for (const auto& command : commands_)
            if (!command.isHidden) names.emplace_back(command.name);
        return wrong({"cli.usage.unknownCommand %@", {word}}, nullptr, closest(word, names));
    }

    EarlyExit noOption(const std::string& word, const CommandSyntax* command) const {
        const auto name = word.substr(0, word.find('='));
        std::vector<std::string> names;
        for (const auto& option : help::globalOptions())
            names.emplace_back(option.name);
        if (command)
            for (const auto& option : command->options)
                names.emplace_back(option.name);
        return wrong({"cli.usage.unknownOption %@", {name}}, command, closest(name, names));
    }

    EarlyExit help(const CommandSyntax* command) const {
        return {0, command ? help::command(*command, texts_) : help::program(commands_, texts_)};
    }

    const std::vector<CommandSyntax>& commands() const { return commands_; }

  private:
    const std::vector<CommandSyntax>& commands_;
    const Texts& texts_;
};

std::optional<EarlyExit> wrongOperandCount(const CommandSyntax& syntax,
                                           const std::vector<std::string>& operands, const Exits& exits) {
    if (operands.size() < syntax.minimumOperands)
        return exits.wrong({"cli.usage.missing %@", {std::string(syntax.operandName)}}, &syntax);
    if (operands.size() > syntax.maximumOperands)
        return exits.wrong({"cli.usage.tooMany %@", {operands[syntax.maximumOperands]}}, &syntax);
    return std::nullopt;
}

/// Refuses a flag with a value, and an empty "--volume=" or "--volume ''", as from a script with an empty
/// variable. The parser would accept "--yes=false" and "--yes=" as "--yes".
std::optional<EarlyExit> wrongValue(const char* const* word, const char* const* end, const Exits& exits) {
    const CommandSyntax* command = nullptr;
    for (; word != end; ++word) {
        const std::string_view text(*word);
        if (!text.starts_with('-')) {
            if (!command) command = find(exits.commands(), text);
            continue;
        }
        const auto name = text.substr(0, text.find('='));
        const bool hasValue = name.size() < text.size();
        const auto* option = findOption(command, name == "-h" ? "--help" : name);
        if (!option) continue;
        if (option->valueName.empty()) {
            if (hasValue) return exits.wrong({"cli.usage.takesNoValue %@", {std::string(name)}}, command);
            continue;
        }
        const bool isCutOff = !hasValue && word + 1 == end;
        const bool isPlace = name == "--volume" || name == "--home";
        const bool isEmpty = hasValue ? text.size() == name.size() + 1 : isPlace && !isCutOff && !*word[1];
        if (isCutOff || isEmpty)
            return exits.wrong({"cli.usage.needsValue %@", {std::string(name)}}, command);
        if (!hasValue) ++word; // its value, even if it looks like an option
    }
    return std::nullopt;
}

/// Why parsing ended early. `command`: the one given, if any.
EarlyExit endOf(const CLI::ParseError& error, const CLI::App& app, const CommandSyntax* command,
                const Exits& exits) {
    if (app.count("--version") > 0) return {0, "tidwen " TIDWEN_VERSION "\n"};
    const auto unexpected = app.remaining(true);
    const auto isOption = [](const std::string& word) { return word.starts_with('-'); };
    if (!command && !unexpected.empty() && !isOption(unexpected.front()))
        return exits.noCommand(unexpected.front());
    if (dynamic_cast<const CLI::CallForHelp*>(&error)) return exits.help(command);
    // The parser accepts a command's own option only after the command.
    if (command && !unexpected.empty() && findOption(command, unexpected.front()))
        return exits.wrong({"cli.usage.behindCommand %@", {unexpected.front()}}, command);
    if (!dynamic_cast<const CLI::ExtrasError*>(&error) || unexpected.empty())
        return exits.wrong({"cli.usage.other %@", {error.what()}}, command);
    return isOption(unexpected.front())
               ? exits.noOption(unexpected.front(), command)
               : exits.wrong({"cli.usage.tooMany %@", {unexpected.front()}}, command);
}

} // namespace

std::string_view programVersion() {
    return TIDWEN_VERSION;
}

std::vector<std::string> Arguments::values(std::string_view option) const {
    const auto found = options.find(option);
    return found == options.end() ? std::vector<std::string>{} : found->second;
}

std::vector<std::string_view> CommandSyntax::actionWords() const {
    std::vector<std::string_view> words;
    words.reserve(actions.size());
    for (const auto& action : actions)
        words.push_back(action.form.substr(0, action.form.find(' ')));
    return words;
}

namespace {

/// "help" and "help COMMAND", among options of every command.
std::optional<EarlyExit> helpFor(const char* const* word, const char* const* end, const Exits& exits) {
    std::vector<std::string> named;
    for (; word != end; ++word) {
        const std::string text(*word);
        if (!text.starts_with('-')) {
            named.push_back(text);
            if (named.front() != "help") return std::nullopt;
            continue;
        }
        const auto name = text.substr(0, text.find('='));
        const auto* option = findOption(nullptr, name == "-h" ? "--help" : name);
        if (!option && named.empty()) return std::nullopt;
        if (!option) return exits.noOption(text, nullptr);
        const bool hasValueBehind = !option->valueName.empty() && name.size() == text.size();
        if (hasValueBehind && word + 1 != end) ++word;
    }
    if (named.empty()) return std::nullopt;
    if (named.size() > 2) return exits.wrong({"cli.usage.tooMany %@", {named[2]}}, nullptr);
    if (named.size() == 1 || named[1] == "help") return exits.help(nullptr);
    const auto* command = find(exits.commands(), named[1]);
    return command ? exits.help(command) : exits.noCommand(named[1]);
}

/// Declares the options and commands; the operands of the command that is named go to `operands`.
void declareAll(CLI::App& app, const std::vector<CommandSyntax>& commands,
                std::vector<std::string>& operands) {
    app.set_help_flag("-h,--help");
    app.require_subcommand(0, 1);
    app.fallthrough();
    for (const auto& option : help::globalOptions())
        if (option.name != "--help") declare(app, option);
    for (const auto& syntax : commands) {
        auto* command = app.add_subcommand(std::string(syntax.name));
        // The number of operands is checked later, so that those after "--" count too.
        if (!syntax.operandName.empty()) command->add_option("operands", operands);
        for (const auto& option : syntax.options)
            declare(*command, option);
    }
}

/// What the parsed options mean for the named command.
std::optional<EarlyExit> readOptions(const CLI::App& app, const CommandSyntax& command,
                                     const char* defaultVolume, const Exits& exits, Arguments& result) {
    result.command = command.name;
    readGlobalOptions(app, result);
    if (!result.volume && defaultVolume) {
        if (!*defaultVolume) return exits.wrong({"cli.usage.needsValue %@", {volumeVariable}}, &command);
        result.volume = defaultVolume;
    }
    for (const auto& option : command.options)
        if (auto values = given(*app.get_subcommand(result.command), option))
            result.options[std::string(option.name)] = std::move(*values);
    return std::nullopt;
}

} // namespace

tl::expected<Arguments, EarlyExit> parseArguments(int count, const char* const* words,
                                                  const std::vector<CommandSyntax>& commands,
                                                  const Texts& texts, const char* defaultVolume) {
    const Exits exits(commands, texts);
    Arguments result;
    result.program = count > 0 ? words[0] : "tidwen";
    CLI::App app("", "tidwen");
    declareAll(app, commands, result.operands);
    const auto namedCommand = [&]() -> const CommandSyntax* {
        const auto named = app.get_subcommands();
        return named.empty() ? nullptr : find(commands, named.front()->get_name());
    };
    // Everything after "--" is an operand; the parser would assign them to the wrong command.
    const auto* const end = words + count;
    const auto* const mark = std::find_if(words, end, [](std::string_view word) { return word == "--"; });
    if (auto wrong = wrongValue(words + std::min(count, 1), mark, exits))
        return tl::unexpected(std::move(*wrong));
    if (auto help = helpFor(words + std::min(count, 1), mark, exits)) return tl::unexpected(std::move(*help));
    try {
        app.parse(static_cast<int>(mark - words), words);
    } catch (const CLI::ParseError& error) {
        return tl::unexpected(endOf(error, app, namedCommand(), exits));
    }
    const CommandSyntax* command = namedCommand();
    if (app.count("--version") > 0) return tl::unexpected(EarlyExit{0, "tidwen " TIDWEN_VERSION "\n"});
    if (!command)
        for (const char* option : {"--volume", "--home"})
            for (const auto& value : app.get_option(option)->results())
                if (find(commands, value))
                    return tl::unexpected(
                        exits.wrong({"cli.usage.commandIsValue %@ %@", {option, value}}, nullptr));
    if (!command && mark != end) return tl::unexpected(exits.wrong({"cli.usage.noCommand"}, nullptr));
    if (!command)
        return tl::unexpected(
            EarlyExit{wrongUsage, help::program(commands, texts), Message{"cli.usage.noCommand"}});
    if (mark != end) result.operands.insert(result.operands.end(), mark + 1, end);
    if (auto wrong = wrongOperandCount(*command, result.operands, exits))
        return tl::unexpected(std::move(*wrong));
    if (auto wrong = readOptions(app, *command, defaultVolume, exits, result))
        return tl::unexpected(std::move(*wrong));
    return result;
}

} // namespace tidwen

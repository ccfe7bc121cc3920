#include "cli/terminal.h"

#include "base/log.h"
#include "base/texts.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/json/services.h"
#include "cli/login_command.h"
#include "host/crash_recorder.h"
#include "host/crash_reports.h"
#include "host/curl_fetcher.h"
#include "program/host_log.h"
#include "program/host_services.h"
#include "program/mac.h"
#include "program/resources.h"
#include "program/volume_mac.h"
#include "settings/app_preferences.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

/// Runs one command and creates only what it needs.
class CommandRun {
  public:
    CommandRun(const CommandContext& context, const TerminalBuild& build, Log& log)
        : context_(context), build_(build), log_(log) {}

    ExitStatus operator()(const Command& command) {
        if (const auto* anywhere = std::get_if<Command::Anywhere>(&command.run)) return (*anywhere)(context_);
        HostServices services(loginCommand(context_.arguments), log_);
        if (const auto* onHost = std::get_if<Command::OnHost>(&command.run))
            return onThisHost(services, [&](Host& host) { return (*onHost)(context_, host); });
        if (const auto* onMac = std::get_if<Command::OnMac>(&command.run))
            return onMacOf(services, [&](Mac& mac) { return (*onMac)(context_, mac); });
        const auto onBoth = std::get<Command::OnHostAndMac>(command.run);
        const auto withHost = [&](Mac* mac) {
            return onThisHost(services, [&](Host& host) { return onBoth(context_, host, mac); });
        };
        if (!context_.arguments.volume && !build_.openRunningMac) return withHost(nullptr);
        return onMacOf(services, [&](Mac& mac) { return withHost(&mac); });
    }

  private:
    template<class Run>
    ExitStatus onThisHost(HostServices& services, const Run& run) {
        const char* authorities =
            std::getenv("SSL_CERT_FILE"); // NOLINT(concurrency-mt-unsafe): nothing sets variables
        CurlFetcher fetcher(authorities ? authorities : "");
        Host host{services.defaults(),
                  log_,
                  fetcher,
                  services.loginItem(),
                  build_.feedKey,
                  build_.feedAddress,
                  build_.openRunningMac != nullptr};
        return run(host);
    }

    /// Opens the given volume, else the running Mac.
    template<class Run>
    ExitStatus onMacOf(HostServices& services, const Run& run) {
        const auto& arguments = context_.arguments;
        if (arguments.volume) {
            auto volume = VolumeMac::open(*arguments.volume, arguments.home, services, context_.texts, log_);
            return volume ? run((*volume)->mac()) : context_.refuse(volume.error());
        }
        if (!build_.openRunningMac) return context_.refuse({"cli.volume.needed"});
        if (arguments.home) return context_.refuse({"cli.home.ofVolume"});
        auto running = build_.openRunningMac(services, context_.texts, log_);
        if (!running) return context_.refuse(running.error());
        return run((*running)->mac());
    }

    const CommandContext& context_;
    const TerminalBuild& build_;
    Log& log_;
};

/// A crash is reported once, at the next start.
void tellOfCrash(const CommandContext& context, Log& log) {
    CrashReports reports(CrashReports::defaultFolder(), context.text("crash.introduction"), log);
    if (const auto report = reports.collect())
        context.console.error(context.text("crash.report %@", {report->string()}));
}

/// With --json, a command that was refused or failed without a document prints one that says why.
void documentFailure(const CommandContext& context) {
    auto& console = context.console;
    const auto& errors = console.errors();
    if (!context.arguments.json || console.hasPrintedDocument() || errors.empty()) return;
    console.document(context.arguments.command == "watch" ? json::failureLine(errors)
                                                          : json::failureDocument(errors));
}

ExitStatus runCommand(const Command& command, const Arguments& arguments, const Texts& texts,
                      const TerminalBuild& build) {
    HostLog log(arguments.verbose ? LogLevel::info : LogLevel::error);
    for (const auto& problem : texts.problems())
        log.warning("{}", problem);
    Console console(stdin, stdout, stderr, arguments.quiet ? Console::Voice::quiet : Console::Voice::normal);
    if (arguments.json) console.hideProgress();
    const CommandContext context{arguments, texts, console};
    tellOfCrash(context, log);
    const auto status = CommandRun(context, build, log)(command);
    if (status != ExitStatus::done) documentFailure(context);
    const bool printed = console.finish();
    return status == ExitStatus::done && !printed ? ExitStatus::someFailed : status;
}

/// Prints the reason, or the requested help.
int end(const EarlyExit& exit, int count, char** words, const Texts& texts) {
    std::FILE* const file = exit.status == 0 ? stdout : stderr;
    std::fputs(fittedTo(file, exit.text).c_str(), file);
    char** const mark =
        std::find_if(words, words + count, [](std::string_view word) { return word == "--"; });
    const bool isForPrograms =
        std::find_if(words, mark, [](std::string_view word) { return word == "--json"; }) != mark;
    if (exit.status != 0 && isForPrograms)
        std::fputs(json::failureDocument({{texts.text(exit.reason), exit.reason.key}}).c_str(), stdout);
    return exit.status;
}

/// By the settings, of which the command itself tells when they cannot be read.
std::string languageOfUser(const std::filesystem::path& resources) {
    HostLog log(LogLevel::error);
    return spokenLanguage(resources, AppPreferences(*hostDefaults(log)).language.get());
}

} // namespace

int runTerminal(int count, char** words, const TerminalBuild& build) {
    // A closed pipe must not end a removal halfway.
    std::signal(SIGPIPE, SIG_IGN);
    crashRecorder::install(CrashReports::defaultFolder(), programVersion());
    const auto resources = findResources(count > 0 ? words[0] : "tidwen");
    const auto texts = Texts::load(resources, languageOfUser(resources));
    if (texts.keys().empty()) {
        std::fprintf(stderr, "tidwen: %s\n", textsNotFound);
        return static_cast<int>(ExitStatus::refused);
    }
    const auto commands = allCommands();
    std::vector<CommandSyntax> syntax;
    syntax.reserve(commands.size());
    for (const auto& command : commands)
        syntax.push_back(command.syntax);
    const auto arguments = parseArguments(count, words, syntax, texts,
                                          std::getenv(volumeVariable)); // NOLINT(concurrency-mt-unsafe)
    if (!arguments) return end(arguments.error(), count, words, texts);
    const auto command = std::find_if(commands.begin(), commands.end(), [&](const Command& candidate) {
        return candidate.syntax.name == arguments->command;
    });
    crashRecorder::note(command->syntax.name);
    return static_cast<int>(runCommand(*command, *arguments, texts, build));
}

} // namespace tidwen

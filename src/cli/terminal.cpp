#include "cli/terminal.h"

#include "cli/command.h"
#include "cli/console.h"
#include "cli/login_command.h"
#include "host/crash_recorder.h"
#include "host/crash_reports.h"
#include "host/curl_fetcher.h"
#include "program/resources.h"
#include "program/volume_mac.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>

namespace tidwen {

namespace {

/// One run of one command: puts together what it needs, and nothing more.
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
        Host host{services.defaults(),  log_,           fetcher,
                  services.loginItem(), build_.feedKey, build_.feedAddress};
        return run(host);
    }

    /// The volume that is named, else the Mac that the program runs on.
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
        return running ? run((*running)->mac()) : context_.refuse(running.error());
    }

    const CommandContext& context_;
    const TerminalBuild& build_;
    Log& log_;
};

/// A crash of an earlier run is told of once, at the next start.
void tellOfCrash(const CommandContext& context, Log& log) {
    CrashReports reports(CrashReports::defaultFolder(), context.text("crash.introduction"), log);
    if (const auto report = reports.collect())
        context.console.complain(context.text("crash.report %@", {report->string()}));
}

ExitStatus runCommand(const Command& command, const Arguments& arguments, const TerminalBuild& build) {
    const auto resources = findResources(arguments.program.c_str());
    const auto texts = Texts::load(resources, preferredLanguage(resources));
    StandardErrorLog log(arguments.verbose ? LogLevel::info : LogLevel::error);
    for (const auto& problem : texts.problems())
        log.warning("{}", problem);
    Console console(stdin, stdout, stderr);
    if (arguments.json) console.hideProgress();
    // Nobody could read what is asked or told, so nothing is begun.
    if (texts.keys().empty()) {
        console.complain(
            "The texts were not found, so nothing was done. TIDWEN_RESOURCES may name their folder.");
        return ExitStatus::refused;
    }
    const CommandContext context{arguments, texts, console};
    tellOfCrash(context, log);
    const auto status = CommandRun(context, build, log)(command);
    const bool printed = console.finish();
    return status == ExitStatus::done && !printed ? ExitStatus::someFailed : status;
}

} // namespace

int runTerminal(int count, char** words, const TerminalBuild& build) {
    // A reader that goes away must not end a removal half-way.
    std::signal(SIGPIPE, SIG_IGN);
    crashRecorder::install(CrashReports::defaultFolder(), programVersion());
    const auto commands = allCommands();
    std::vector<CommandSyntax> syntax;
    syntax.reserve(commands.size());
    for (const auto& command : commands)
        syntax.push_back(command.syntax);
    const auto arguments = parseArguments(count, words, syntax);
    if (!arguments) {
        std::fputs(arguments.error().text.c_str(), arguments.error().status == 0 ? stdout : stderr);
        return arguments.error().status;
    }
    const auto command = std::find_if(commands.begin(), commands.end(), [&](const Command& candidate) {
        return candidate.syntax.name == arguments->command;
    });
    crashRecorder::note(command->syntax.name);
    return static_cast<int>(runCommand(*command, *arguments, build));
}

} // namespace tidwen

#include "cli/command.h"
#include "cli/console.h"
#include "cli/login_command.h"
#include "cli/own_services.h"
#include "cli/resources.h"
#include "host/crash_recorder.h"
#include "host/crash_reports.h"
#include "host/curl_fetcher.h"
#include "host/desktop_notifications.h"
#include "platform/file_code_signatures.h"
#include "posix/posix_process_runner.h"
#include "posix/rooted_file_system.h"
#include "volume/volume_permission_revoker.h"
#include "volume/volume_runner.h"
#include "volume/volume_sources.h"
#include "volume/volume_user.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>

namespace tidwen {

namespace {

/// Everything that stands behind the ports while a command works on a volume.
class VolumeMac {
  public:
    VolumeMac(std::unique_ptr<RootedFileSystem> files, UserEnvironment user, std::filesystem::path folder,
              const Arguments& arguments, const Texts& texts, Log& log)
        : files_(std::move(files)),
          user_(std::move(user)),
          signatures_(*files_),
          receipts_(*files_),
          systemExtensions_(*files_),
          launchd_(*files_, user_),
          hostFolders_(ownServices::folderEvents("/")),
          defaults_(ownServices::defaults(log, *hostFolders_)),
          runner_(*files_, user_, log),
          revoker_(*files_, user_),
          folderEvents_(ownServices::folderEvents(folder)),
          notifications_(processes_),
          loginItem_(ownServices::loginItem(loginCommand(arguments), log)),
          mac_{.system = {.files = *files_,
                          .signatures = signatures_,
                          .receipts = receipts_,
                          .keychain = keychain_,
                          .systemExtensions = systemExtensions_,
                          .runningApplications = runningApplications_,
                          .launchd = launchd_,
                          .defaults = *defaults_,
                          .texts = texts,
                          .clock = clock_,
                          .log = log,
                          .user = user_},
               .userRunner = runner_,
               .privilegedRunner = runner_,
               .permissionRevoker = revoker_,
               .folderEvents = *folderEvents_,
               .notifications = notifications_,
               .loginItem = *loginItem_,
               .administrator = std::nullopt,
               .volume = std::move(folder)} {}

    Mac& mac() { return mac_; }

  private:
    std::unique_ptr<RootedFileSystem> files_;
    UserEnvironment user_;
    FileCodeSignatures signatures_;
    VolumeReceipts receipts_;
    VolumeKeychain keychain_;
    VolumeSystemExtensions systemExtensions_;
    VolumeRunningApplications runningApplications_;
    VolumeLaunchd launchd_;
    std::unique_ptr<FolderEvents> hostFolders_;
    std::unique_ptr<Defaults> defaults_;
    SystemClock clock_;
    VolumeRunner runner_;
    VolumePermissionRevoker revoker_;
    std::unique_ptr<FolderEvents> folderEvents_;
    PosixProcessRunner processes_;
    DesktopNotifications notifications_;
    std::unique_ptr<LoginItem> loginItem_;
    Mac mac_;
};

Message describe(const VolumeUserError& error) {
    std::string homes;
    switch (error.kind) {
    case VolumeUserError::Kind::noHome:
        return {"cli.home.none"};
    case VolumeUserError::Kind::notAFolder:
        return {"cli.home.notAFolder %@", {error.home.string()}};
    case VolumeUserError::Kind::notAHome:
        return {"cli.home.notAHome %@", {error.home.string()}};
    case VolumeUserError::Kind::severalHomes:
        for (const auto& candidate : error.candidates)
            homes += (homes.empty() ? "" : ", ") + candidate.string();
        break;
    }
    return {"cli.home.several %@", {homes}};
}

ExitStatus runOnVolume(const std::function<ExitStatus(Mac&)>& run, const CommandContext& context, Log& log) {
    const auto& folder = context.arguments.volume;
    if (!folder) return context.refuse({"cli.volume.needed"});
    auto files = RootedFileSystem::open(*folder);
    if (!files && files.error().fault == FileFault::missing)
        return context.refuse({"cli.volume.missing %@", {folder->string()}});
    if (!files)
        return context.refuse(
            {"cli.volume.unusable %@ %@", {folder->string(), context.text(failureKey(files.error().fault))}});
    std::optional<Path> home;
    if (context.arguments.home) home = Path(*context.arguments.home);
    auto user = findVolumeUser(**files, home);
    if (!user) return context.refuse(describe(user.error()));
    if (const auto known = (*files)->setHome(user->home); !known)
        return context.refuse({std::string(failureKey(known.error().fault))});
    VolumeMac mac(std::move(*files), std::move(*user), *folder, context.arguments, context.texts, log);
    return run(mac.mac());
}

ExitStatus runOnHost(const std::function<ExitStatus(Host&)>& run, const CommandContext& context, Log& log) {
    const auto folders = ownServices::folderEvents("/");
    const auto defaults = ownServices::defaults(log, *folders);
    const char* authorities =
        std::getenv("SSL_CERT_FILE"); // NOLINT(concurrency-mt-unsafe): nothing sets variables
    CurlFetcher fetcher(authorities ? authorities : "");
    const auto loginItem = ownServices::loginItem(loginCommand(context.arguments), log);
    Host host{*defaults, log, fetcher, *loginItem, TIDWEN_FEED_KEY, TIDWEN_FEED_ADDRESS};
    return run(host);
}

/// Puts together what the command needs.
ExitStatus run(const Command& command, const CommandContext& context, Log& log) {
    if (const auto* anywhere = std::get_if<Command::Anywhere>(&command.run)) return (*anywhere)(context);
    if (const auto* onHost = std::get_if<Command::OnHost>(&command.run))
        return runOnHost([&](Host& host) { return (*onHost)(context, host); }, context, log);
    if (const auto* onMac = std::get_if<Command::OnMac>(&command.run))
        return runOnVolume([&](Mac& mac) { return (*onMac)(context, mac); }, context, log);
    const auto onBoth = std::get<Command::OnHostAndMac>(command.run);
    const auto withHost = [&](Mac* mac) {
        return runOnHost([&](Host& host) { return onBoth(context, host, mac); }, context, log);
    };
    if (!context.arguments.volume) return withHost(nullptr);
    return runOnVolume([&](Mac& mac) { return withHost(&mac); }, context, log);
}

/// A crash of an earlier run is told of once, at the next start.
void tellOfCrash(const CommandContext& context, Log& log) {
    CrashReports reports(CrashReports::defaultFolder(), context.text("crash.introduction"), log);
    if (const auto report = reports.collect())
        context.console.complain(context.text("crash.report %@", {report->string()}));
}

ExitStatus runCommand(const Command& command, const Arguments& arguments) {
    const auto resources = findResources(arguments.program.c_str());
    const auto texts = Texts::load(resources, preferredLanguage(resources));
    StandardErrorLog log(arguments.verbose ? LogLevel::info : LogLevel::error);
    for (const auto& problem : texts.problems())
        log.warning("{}", problem);
    if (texts.keys().empty()) log.error("the texts were not found; TIDWEN_RESOURCES may name their folder");
    Console console(stdin, stdout, stderr);
    const CommandContext context{arguments, texts, console};
    tellOfCrash(context, log);
    const auto status = run(command, context, log);
    const bool printed = console.finish();
    return status == ExitStatus::done && !printed ? ExitStatus::someFailed : status;
}

} // namespace

} // namespace tidwen

int main(int count, char** words) {
    using namespace tidwen;
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
    return static_cast<int>(runCommand(*command, *arguments));
}

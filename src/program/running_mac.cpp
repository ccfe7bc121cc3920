#include "program/running_mac.h"

#include "base/log.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "operations/admin_script_runner.h"
#include "operations/permission_revoker.h"
#include "operations/tool_launchd.h"
#include "operations/tool_receipts.h"
#include "operations/tool_system_extensions.h"
#include "operations/tool_workspace.h"
#include "operations/user_scope_runner.h"
#include "platform/file_code_signatures.h"
#include "platform/file_system.h"
#include "platform/folder_events.h"
#include "posix/rooted_file_system.h"
#include "program/host_services.h"

#include <cstdlib>
#include <optional>
#include <string>

namespace tidwen {

namespace {

/// Only a Mac can tell whether root's shell may enter the Trash, which macOS guards; until one has told, this
/// variable turns on the way around it.
AdminScriptRunner::Trash trashForRoot() {
    const bool isClosed = std::getenv("TIDWEN_STAGE_ROOT_MOVES") != nullptr; // NOLINT(concurrency-mt-unsafe)
    return isClosed ? AdminScriptRunner::Trash::closedToRoot : AdminScriptRunner::Trash::openToRoot;
}

} // namespace

struct RunningMac::Parts {
    Parts(std::unique_ptr<RootedFileSystem> opened, FrameworkPorts ports, HostServices& host,
          const Texts& texts, Log& log)
        : owner(std::move(ports.owner)),
          files(std::move(opened)),
          signatures(*files),
          receipts(host.processes()),
          systemExtensions(host.processes()),
          launchd(host.processes(), ports.user.userID),
          workspace(*files, host.processes()),
          administrator(AdminScriptRunner::throughOsascript(host.processes(), ports.promptTimeout)),
          userRunner({*files, host.processes(), ports.keychain, ports.applications, log}, ports.user),
          privilegedRunner(administrator, *files, ports.user, log, trashForRoot()),
          revoker(host.processes()),
          folderEvents(hostFolderEvents("/")),
          mac{.system = {.files = *files,
                         .signatures = signatures,
                         .receipts = receipts,
                         .keychain = ports.keychain,
                         .systemExtensions = systemExtensions,
                         .runningApplications = ports.applications,
                         .knownApplications = ports.knownApplications,
                         .launchd = launchd,
                         .workspace = workspace,
                         .defaults = host.defaults(),
                         .texts = texts,
                         .clock = clock,
                         .log = log,
                         .user = ports.user},
              .userRunner = userRunner,
              .privilegedRunner = privilegedRunner,
              .permissionRevoker = revoker,
              .folderEvents = *folderEvents,
              .notifications = host.notifications(),
              .loginItem = host.loginItem(),
              .knownApps = host.knownApps(),
              .isFinderExtensionEnabled = ports.isFinderExtensionEnabled,
              .groupContainer = ports.groupContainer,
              .usageRecords = ports.usageRecords,
              .administrator = administrator,
              .trashForRoot = trashForRoot(),
              .volume = std::nullopt} {}

    std::shared_ptr<void> owner;
    std::unique_ptr<RootedFileSystem> files;
    FileCodeSignatures signatures;
    ToolReceipts receipts;
    ToolSystemExtensions systemExtensions;
    ToolLaunchd launchd;
    ToolWorkspace workspace;
    SystemClock clock;
    AdminScriptRunner::Execute administrator;
    UserScopeRunner userRunner;
    AdminScriptRunner privilegedRunner;
    ToolPermissionRevoker revoker;
    std::unique_ptr<FolderEvents> folderEvents;
    Mac mac;
};

tl::expected<std::unique_ptr<RunningMac>, Message> RunningMac::open(FrameworkPorts ports, HostServices& host,
                                                                    const Texts& texts, Log& log) {
    auto files = RootedFileSystem::open("/");
    if (!files) return tl::unexpected(Message{std::string(failureKey(files.error().fault))});
    ports.user.isOnRunningMac = true;
    if (const auto known = (*files)->setHome(ports.user.home); !known)
        return tl::unexpected(Message{std::string(failureKey(known.error().fault))});
    auto parts = std::make_unique<Parts>(std::move(*files), std::move(ports), host, texts, log);
    return std::unique_ptr<RunningMac>(new RunningMac(std::move(parts)));
}

RunningMac::RunningMac(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
RunningMac::~RunningMac() = default;

Mac& RunningMac::mac() {
    return parts_->mac;
}

} // namespace tidwen

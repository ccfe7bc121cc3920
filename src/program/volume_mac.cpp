#include "program/volume_mac.h"

#include "base/log.h"
#include "base/path.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "host/file_manager.h"
#include "platform/file_code_signatures.h"
#include "platform/file_system.h"
#include "platform/folder_events.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "program/host_services.h"
#include "volume/volume_permission_revoker.h"
#include "volume/volume_runner.h"
#include "volume/volume_sources.h"
#include "volume/volume_user.h"
#include "volume/volume_workspace.h"

#include <filesystem>

namespace tidwen {

struct VolumeMac::Parts {
    Parts(std::unique_ptr<FileSystem> opened, UserEnvironment found, std::filesystem::path folder,
          HostServices& host, const Texts& texts, Log& log)
        : files(std::move(opened)),
          user(std::move(found)),
          signatures(*files),
          receipts(*files),
          systemExtensions(*files),
          launchd(*files, user),
          workspace(*files, folder, [&host](const auto& item) { return revealHere(host.processes(), item); }),
          runner(*files, user, log),
          revoker(*files, user),
          folderEvents(hostFolderEvents(folder)),
          mac{.system = {.files = *files,
                         .signatures = signatures,
                         .receipts = receipts,
                         .keychain = keychain,
                         .systemExtensions = systemExtensions,
                         .runningApplications = runningApplications,
                         .knownApplications = knownApplications,
                         .launchd = launchd,
                         .workspace = workspace,
                         .defaults = host.defaults(),
                         .texts = texts,
                         .clock = clock,
                         .log = log,
                         .user = user},
              .userRunner = runner,
              .privilegedRunner = runner,
              .permissionRevoker = revoker,
              .folderEvents = *folderEvents,
              .notifications = host.notifications(),
              .loginItem = host.loginItem(),
              .knownApps = host.knownApps(),
              .isFinderExtensionEnabled = [] { return false; },
              .administrator = std::nullopt,
              .volume = std::move(folder)} {}

    std::unique_ptr<FileSystem> files;
    UserEnvironment user;
    FileCodeSignatures signatures;
    VolumeReceipts receipts;
    VolumeKeychain keychain;
    VolumeSystemExtensions systemExtensions;
    VolumeRunningApplications runningApplications;
    VolumeKnownApplications knownApplications;
    VolumeLaunchd launchd;
    VolumeWorkspace workspace;
    SystemClock clock;
    VolumeRunner runner;
    VolumePermissionRevoker revoker;
    std::unique_ptr<FolderEvents> folderEvents;
    Mac mac;
};

namespace {

Message describe(const VolumeUserError& error) {
    std::string homes;
    switch (error.kind) {
    case VolumeUserError::Kind::noHome:
        return {"volume.home.none"};
    case VolumeUserError::Kind::noMac:
        return {"volume.home.noMac"};
    case VolumeUserError::Kind::notAPath:
        return {"volume.home.notAPath %@ %@", {error.home.string(), "/Users/" + error.home.string()}};
    case VolumeUserError::Kind::linked:
        return {"volume.home.linked %@", {error.home.string()}};
    case VolumeUserError::Kind::indirect:
        return {"volume.home.indirect %@", {error.home.string()}};
    case VolumeUserError::Kind::notAFolder:
        return {"volume.home.notAFolder %@", {error.home.string()}};
    case VolumeUserError::Kind::notAHome:
        return {"volume.home.notAHome %@", {error.home.string()}};
    case VolumeUserError::Kind::severalHomes:
        for (const auto& candidate : error.candidates)
            homes += (homes.empty() ? "" : ", ") + candidate.string();
        break;
    }
    return {"volume.home.several %@", {homes}};
}

Message describe(const FileError& error, const std::filesystem::path& folder) {
    if (error.fault == FileFault::missing) return {"volume.missing %@", {folder.string()}};
    return {"volume.unusable %@ %@", {folder.string(), Message{std::string(failureKey(error.fault))}}};
}

} // namespace

tl::expected<std::unique_ptr<VolumeMac>, Message> VolumeMac::open(const std::filesystem::path& folder,
                                                                  const std::optional<std::string>& home,
                                                                  HostServices& host, const Texts& texts,
                                                                  Log& log) {
    auto files = RootedFileSystem::open(folder);
    if (!files) return tl::unexpected(describe(files.error(), folder));
    auto user = findVolumeUser(**files, home ? std::optional(Path(*home)) : std::nullopt);
    if (!user) return tl::unexpected(describe(user.error()));
    if (const auto known = (*files)->setHome(user->home); !known)
        return tl::unexpected(Message{std::string(failureKey(known.error().fault))});
    return over(std::move(*files), std::move(*user), folder, host, texts, log);
}

std::unique_ptr<VolumeMac> VolumeMac::over(std::unique_ptr<FileSystem> files, UserEnvironment user,
                                           std::filesystem::path folder, HostServices& host,
                                           const Texts& texts, Log& log) {
    auto parts =
        std::make_unique<Parts>(std::move(files), std::move(user), std::move(folder), host, texts, log);
    return std::unique_ptr<VolumeMac>(new VolumeMac(std::move(parts)));
}

std::vector<std::string> VolumeMac::homesToChoose(const std::filesystem::path& folder) {
    const auto files = RootedFileSystem::open(folder);
    const auto user = files ? findVolumeUser(**files, std::nullopt) : tl::unexpected(VolumeUserError{});
    std::vector<std::string> homes;
    if (user) return homes;
    homes.reserve(user.error().candidates.size());
    for (const auto& candidate : user.error().candidates)
        homes.push_back(candidate.string());
    return homes;
}

VolumeMac::VolumeMac(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
VolumeMac::~VolumeMac() = default;

Mac& VolumeMac::mac() {
    return parts_->mac;
}

} // namespace tidwen

#include "app/shell/mac_opener.h"

#include "base/background_step.h"
#include "base/log.h"
#include "base/uuid.h"
#include "program/host_services.h"
#include "program/volume_mac.h"
#include "sample/sample_volume.h"

#include <system_error>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

/// A folder of its own each time, called so that people recognise it.
fs::path newSampleFolder() {
    std::error_code failure;
    const auto above = fs::temp_directory_path(failure) / ("tidwen-" + Uuid::random().string());
    fs::create_directory(above, failure);
    fs::permissions(above, fs::perms::owner_all, failure);
    return above / "Sample";
}

std::string nameOf(const fs::path& folder) {
    auto name = folder.filename().string();
    return name.empty() ? folder.parent_path().filename().string() : name;
}

MacOpener::Result openVolume(const fs::path& folder, const std::optional<std::string>& home, bool isTemporary,
                             HostServices& host, const Texts& texts, Log& log) {
    auto volume = VolumeMac::open(folder, home, host, texts, log);
    if (!volume)
        return tl::unexpected(MacOpener::Refusal{volume.error(), home ? std::vector<std::string>()
                                                                      : VolumeMac::homesToChoose(folder)});
    std::error_code failure;
    auto place =
        isTemporary ? std::nullopt : std::optional(RecentVolume{absolute(folder, failure).string(), home});
    return MacOpener::Opened{std::move(*volume), nameOf(folder), std::move(place)};
}

} // namespace

void MacOpener::openRunning(const OpenMac& running, Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this, running]() -> Result {
            auto mac = running(host_, texts_, log_);
            if (!mac) return tl::unexpected(Refusal{mac.error()});
            return Opened{std::move(*mac), texts_.text("window.thisMac"), std::nullopt};
        },
        [then = std::move(then)](MacOpener&, Result result) { then(std::move(result)); });
}

void MacOpener::open(fs::path folder, std::optional<std::string> home, Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this, folder = std::move(folder), home = std::move(home)] {
            return openVolume(folder, home, false, host_, texts_, log_);
        },
        [then = std::move(then)](MacOpener&, Result result) { then(std::move(result)); });
}

void MacOpener::openSample(const std::optional<fs::path>& folder, Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this, folder]() -> Result {
            const auto sample = writeSampleVolume(folder ? *folder : newSampleFolder());
            if (!sample) return tl::unexpected(Refusal{sample.error().reason});
            return openVolume(sample->root, std::nullopt, !folder, host_, texts_, log_);
        },
        [then = std::move(then)](MacOpener&, Result result) { then(std::move(result)); });
}

} // namespace tidwen

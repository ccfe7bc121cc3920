#include "app/shell/mac_opener.h"

#include "base/background_step.h"
#include "base/log.h"
#include "program/host_services.h"
#include "program/volume_mac.h"
#include "sample/sample_volume.h"
#include "sample/temporary_sample.h"

#include <system_error>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

std::string nameOf(const fs::path& folder) {
    auto name = folder.filename().string();
    return name.empty() ? folder.parent_path().filename().string() : name;
}

MacOpener::Result openVolume(const fs::path& folder, const std::optional<std::string>& home,
                             HostServices& host, const Texts& texts, Log& log) {
    auto volume = VolumeMac::open(folder, home, host, texts, log);
    if (!volume)
        return tl::unexpected(MacOpener::Refusal{volume.error(), home ? std::vector<std::string>()
                                                                      : VolumeMac::homesToChoose(folder)});
    std::error_code failure;
    return MacOpener::Opened{std::move(*volume), nameOf(folder),
                             RecentVolume{absolute(folder, failure).string(), home}};
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
            return openVolume(folder, home, host_, texts_, log_);
        },
        [then = std::move(then)](MacOpener&, Result result) { then(std::move(result)); });
}

void MacOpener::openSample(Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this]() -> Result {
            auto sample = TemporarySample::write();
            if (!sample) return tl::unexpected(Refusal{sample.error().reason});
            auto opened = openVolume((*sample)->root(), std::nullopt, host_, texts_, log_);
            if (!opened) return opened;
            opened->volume.reset(); // it cannot be opened again
            opened->sample = std::move(*sample);
            return opened;
        },
        [then = std::move(then)](MacOpener&, Result result) { then(std::move(result)); });
}

void MacOpener::openSample(const fs::path& folder, Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this, folder]() -> Result {
            const auto sample = writeSampleVolume(folder);
            if (!sample) return tl::unexpected(Refusal{sample.error().reason});
            return openVolume(sample->root, std::nullopt, host_, texts_, log_);
        },
        [then = std::move(then)](MacOpener&, Result result) { then(std::move(result)); });
}

} // namespace tidwen

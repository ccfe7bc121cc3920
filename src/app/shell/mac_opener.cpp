#include "app/shell/mac_opener.h"

#include "base/background_step.h"
#include "base/uuid.h"
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

} // namespace

void MacOpener::open(fs::path folder, std::optional<std::string> home, Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this, folder = std::move(folder), home = std::move(home)]() -> tl::expected<Opened, Message> {
            auto volume = VolumeMac::open(folder, home, host_, texts_, log_);
            if (!volume) return tl::unexpected(volume.error());
            return Opened{std::move(*volume), nameOf(folder)};
        },
        [then = std::move(then)](MacOpener&, tl::expected<Opened, Message> opened) {
            then(std::move(opened));
        });
}

void MacOpener::openRunning(const RunningMac::Open& running, Then then) {
    inBackground(
        *this, alive_, background_, main_,
        [this, running]() -> tl::expected<Opened, Message> {
            auto mac = running(host_, texts_, log_);
            if (!mac) return tl::unexpected(mac.error());
            return Opened{std::move(*mac), texts_.text("window.thisMac")};
        },
        [then = std::move(then)](MacOpener&, tl::expected<Opened, Message> opened) {
            then(std::move(opened));
        });
}

void MacOpener::openSample(Then then) {
    inBackground(
        *this, alive_, background_, main_, [folder = newSampleFolder()] { return writeSampleVolume(folder); },
        [then = std::move(then)](MacOpener& opener,
                                 const tl::expected<SampleSummary, SampleError>& sample) mutable {
            if (sample)
                opener.open(sample->root, std::nullopt, std::move(then));
            else
                then(tl::unexpected(sample.error().reason));
        });
}

} // namespace tidwen

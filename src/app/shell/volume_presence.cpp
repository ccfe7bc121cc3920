#include "app/shell/volume_presence.h"

#include "base/background_step.h"
#include "base/path.h"

#include <cstdint>
#include <sys/stat.h>
#include <utility>

namespace tidwen {

namespace {

constexpr int lookEvery = 3000; ///< milliseconds

/// The files are those of the folder that was opened, wherever it is now; another of the same name may stand
/// in its place.
bool isThere(const FileSystem& files, const std::filesystem::path& folder) {
    const auto opened = files.info(Path("/"));
    const auto entries = files.list(Path("/"));
    if (!opened || !entries || entries->empty()) return false;
    struct stat now = {};
    return ::stat(folder.c_str(), &now) == 0 && static_cast<std::uint64_t>(now.st_dev) == opened->device
           && static_cast<std::uint64_t>(now.st_ino) == opened->inode;
}

} // namespace

VolumePresence::VolumePresence(const FileSystem& files, std::filesystem::path folder, Executor& main)
    : files_(files), folder_(std::move(folder)), main_(main) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { look(); });
    timer_.start(lookEvery);
}

void VolumePresence::close() {
    timer_.stop();
    alive_.reset();
}

void VolumePresence::look() {
    if (std::exchange(isLooking_, true)) return;
    inBackground(
        *this, alive_, queue_, main_,
        [&files = files_, folder = folder_] { return tidwen::isThere(files, folder); },
        [](VolumePresence& self, bool isThereNow) {
            self.isLooking_ = false;
            self.isThere.set(isThereNow);
        });
}

/// Not with the look that may be under way: that one began before this was asked.
void VolumePresence::onceThere(std::function<void()> act) {
    inBackground(
        *this, alive_, queue_, main_,
        [&files = files_, folder = folder_] { return tidwen::isThere(files, folder); },
        [act = std::move(act)](VolumePresence& self, bool isThereNow) {
            self.isThere.set(isThereNow);
            if (isThereNow) act();
        });
}

} // namespace tidwen

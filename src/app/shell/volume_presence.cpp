#include "app/shell/volume_presence.h"

#include "base/background_step.h"
#include "base/path.h"

#include <cstdint>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace tidwen {

namespace {

constexpr int lookEvery = 3000; ///< milliseconds

/// The files are those of the folder that was opened, wherever it is now; another of the same name may stand
/// in its place.
VolumePresence::Found look(const FileSystem& files, const std::filesystem::path& folder) {
    using Found = VolumePresence::Found;
    struct stat now = {};
    std::error_code none;
    if (::stat(folder.c_str(), &now) != 0 || std::filesystem::is_empty(folder, none) || none)
        return Found::nothing;
    const auto opened = files.info(Path("/"));
    const bool isSame = opened && static_cast<std::uint64_t>(now.st_dev) == opened->device
                        && static_cast<std::uint64_t>(now.st_ino) == opened->inode;
    return isSame && files.list(Path("/")) ? Found::same : Found::another;
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

void VolumePresence::look(std::function<void()> whenAnother) {
    if (std::exchange(isLooking_, true)) return;
    inBackground(
        *this, alive_, queue_, main_,
        [&files = files_, folder = folder_] { return tidwen::look(files, folder); },
        [whenAnother = std::move(whenAnother)](VolumePresence& self, Found found) {
            self.isLooking_ = false;
            self.isThere.set(found == Found::same);
            if (found == Found::another && whenAnother) whenAnother();
        });
}

/// Not with the look that may be under way: that one began before this was asked.
void VolumePresence::onceThere(std::function<void()> act) {
    inBackground(
        *this, alive_, queue_, main_,
        [&files = files_, folder = folder_] { return tidwen::look(files, folder); },
        [act = std::move(act)](VolumePresence& self, Found found) {
            self.isThere.set(found == Found::same);
            if (found == Found::same) act();
        });
}

} // namespace tidwen

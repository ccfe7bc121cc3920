#include "scan/applications/read_trail.h"

#include "base/path.h"
#include "platform/file_system.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace tidwen {
namespace {

// Some file systems store times in steps of up to two seconds; two changes within one step look the same.
constexpr std::chrono::nanoseconds longestStep = std::chrono::seconds(2);

std::int64_t nanosecondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

} // namespace

ReadTrail::ReadTrail(bool notes) : notes_(notes), newestTrusted_(nanosecondsNow() - longestStep.count()) {}

void ReadTrail::note(const FileSystem& files, const Path& path) {
    if (!notes_) return;
    const auto [state, isNew] = states_.try_emplace(path);
    if (isNew) state->second = stateOf(files.infoFollowingLinks(path));
}

void ReadTrail::note(const Path& path, const FileResult<FileInfo>& target) {
    if (notes_) states_.try_emplace(path, stateOf(target));
}

bool ReadTrail::isUnchanged(const FileSystem& files) const {
    return std::all_of(states_.begin(), states_.end(), [&](const auto& noted) {
        return std::get<3>(noted.second) < newestTrusted_
               && stateOf(files.infoFollowingLinks(noted.first)) == noted.second;
    });
}

ReadTrail::State ReadTrail::stateOf(const FileResult<FileInfo>& target) {
    if (!target) return {};
    return {target->device, target->inode, target->size, target->modifiedNanoseconds,
            target->addedNanoseconds};
}

} // namespace tidwen

#include "posix/patient_lock.h"

#include "base/path.h"

#include <memory>
#include <thread>

namespace tidwen {

FileResult<std::unique_ptr<FolderLock>> lockPatiently(FileSystem& files, const Path& folder,
                                                      std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds pause{10};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        auto lock = files.lock(folder);
        if (lock || lock.error().fault != FileFault::busy || std::chrono::steady_clock::now() >= deadline)
            return lock;
        std::this_thread::sleep_for(pause);
    }
}

} // namespace tidwen

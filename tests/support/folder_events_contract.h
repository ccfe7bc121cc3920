#pragma once

#include "base/path.h"
#include "platform/folder_events.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>

namespace tidwen::test {

/// What every way to watch folders keeps: a folder may come, go and come back. `events`: of the volume.
inline void expectToFollowAFolder(const TemporaryVolume& volume, FolderEvents& events) {
    volume.makeFolder("/Users/alice/.Trash");
    volume.write("/Users/carol/.Trash", "no folder");
    std::mutex mutex;
    std::condition_variable told;
    int count = 0;
    const auto watch = [&](const char* folder) {
        return events.watch(Path(folder), [&] {
            const std::lock_guard lock(mutex);
            ++count;
            told.notify_all();
        });
    };
    const auto isToldOf = [&](const std::function<void()>& change) {
        std::unique_lock lock(mutex);
        count = 0;
        change();
        return told.wait_for(lock, std::chrono::seconds(20), [&] { return count > 0; });
    };
    const auto rename = [&](const char* from, const char* to) {
        std::filesystem::rename(volume.host(from), volume.host(to));
    };
    auto watching = watch("/Users/alice/.Trash");
    ASSERT_TRUE(watching);
    EXPECT_TRUE(isToldOf([&] { volume.write("/Users/alice/.Trash/x", "1"); }));
    EXPECT_TRUE(isToldOf([&] { rename("/Users/alice/.Trash", "/Users/alice/old"); }));
    EXPECT_TRUE(isToldOf([&] { volume.makeFolder("/Users/alice/.Trash"); }));
    EXPECT_TRUE(isToldOf([&] { volume.write("/Users/alice/.Trash/y", "1"); }));

    watching = watch("/Users/bob/.Trash"); // neither it nor what holds it is there yet
    EXPECT_TRUE(isToldOf([&] { volume.write("/Users/bob/.Trash/x", "1"); }));
    EXPECT_EQ(watch("/Users/carol/.Trash"), nullptr);
}

} // namespace tidwen::test

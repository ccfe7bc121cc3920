#pragma once

#include "base/executor.h"
#include "base/timestamp.h"
#include "platform/applications.h"
#include "platform/folder_events.h"
#include "platform/keychain.h"

#include <set>
#include <vector>

namespace tidwen::test {

/// A clock that stands, at the beginning of its time unless a test sets it.
struct FixedClock : Clock {
    Timestamp now() const override { return time; }
    Timestamp time{};
};

/// The main thread and one for long work, which do what they were given when the test says so.
struct SteppedQueues {
    /// Does all that is queued, and all that it queues.
    void settle() {
        while (background.drain() + main.drain() > 0) {
        }
    }
    MainQueue main, background;
};

/// Folder events that the test fires.
struct HandFiredEvents : FolderEvents {
    std::unique_ptr<Watch> watch(const Path& folder, std::function<void()> changed) override {
        if (isImpossible) return nullptr;
        watched.push_back(folder);
        (folder.lastComponent() == "Contents" ? fireInBundle : fire) = std::move(changed);
        return std::make_unique<Watch>();
    }
    std::vector<Path> watched;
    std::function<void()> fire, fireInBundle;
    bool isImpossible = false;
};

/// Says who runs, and keeps whom it asked to quit.
struct FakeApplications : RunningApplications {
    bool isRunning(const std::string& bundleID) const override {
        return obedient.contains(bundleID) || stubborn.contains(bundleID);
    }
    bool quit(const std::string& bundleID, std::chrono::milliseconds) override {
        asked.push_back(bundleID);
        return !stubborn.contains(bundleID);
    }
    std::set<std::string> obedient, stubborn;
    std::vector<std::string> asked;
};

/// A keychain in memory: answers a deletion with the status given, and keeps whose items were to go.
struct FakeKeychain : Keychain {
    std::vector<KeychainEntry> entries() const override { return all; }
    std::int32_t deleteItems(KeychainItemClass itemClass, const std::string& service) override {
        asked.push_back(service);
        return itemClass == KeychainItemClass::genericPassword ? generic : internet;
    }
    std::vector<KeychainEntry> all;
    std::int32_t generic = 0, internet = 0;
    std::vector<std::string> asked;
};

} // namespace tidwen::test

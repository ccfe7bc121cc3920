#pragma once

#include "base/executor.h"
#include "base/path.h"
#include "base/text.h"
#include "base/timestamp.h"
#include "platform/applications.h"
#include "platform/folder_events.h"
#include "platform/keychain.h"
#include "platform/known_applications.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tidwen::test {

/// A clock that always returns the same time, the epoch unless a test sets it.
struct FixedClock : Clock {
    Timestamp now() const override { return time; }
    Timestamp time{};
};

/// The main thread and a background queue, both run by the test.
struct SteppedQueues {
    /// Runs everything queued, and everything that work queues in turn.
    void settle() {
        while (background.drain() + main.drain() > 0) {
        }
    }
    MainQueue main, background;
};

/// Folder events triggered by the test.
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

/// A fixed set of running applications; records which were asked to quit.
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

/// Knows the applications with these identifiers.
struct FakeKnownApplications : KnownApplications {
    bool isKnown(const std::string& bundleID) const override {
        return std::ranges::any_of(
            identifiers, [&](const auto& each) { return lowercased(each) == lowercased(bundleID); });
    }
    std::vector<std::string> identifiers;
};

/// A keychain in memory: deletions return the given status, and are recorded.
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

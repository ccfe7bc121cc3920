#include "macos/workspace_applications.h"

#include "base/descriptor.h"
#include "posix/item_description.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <sys/event.h>
#include <vector>

namespace tidwen {

namespace {

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

/// What the objects themselves say of a process changes only while a main run loop turns, so the kernel is
/// asked whether it is still there.
std::vector<NSRunningApplication*> instancesOf(const std::string& bundleID) {
    std::vector<NSRunningApplication*> instances;
    NSString* const name = [NSString stringWithUTF8String:bundleID.c_str()];
    if (!name) return instances;
    for (NSRunningApplication* each in [NSRunningApplication runningApplicationsWithBundleIdentifier:name])
        if (each.processIdentifier > 0 && (::kill(each.processIdentifier, 0) == 0 || errno == EPERM))
            instances.push_back(each);
    return instances;
}

timespec remaining(steady_clock::time_point deadline) {
    const auto left = std::max(nanoseconds(0), nanoseconds(deadline - steady_clock::now())).count();
    return {.tv_sec = left / 1'000'000'000, .tv_nsec = left % 1'000'000'000};
}

/// The ends of processes, each told once.
class Ends {
  public:
    Ends() : queue_(::kqueue()) {}

    /// False when it has ended already, or cannot be followed.
    bool follow(pid_t process) {
        struct kevent64_s end {};
        EV_SET64(&end, static_cast<std::uint64_t>(process), EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, 0,
                 0, 0);
        return ::kevent64(queue_.get(), &end, 1, nullptr, 0, 0, nullptr) == 0;
    }

    /// Waits for one, and tells whose it is; nullopt when none came in time.
    std::optional<pid_t> wait(steady_clock::time_point deadline) {
        struct kevent64_s end {};
        for (;;) {
            const auto timeout = remaining(deadline);
            const int count = ::kevent64(queue_.get(), nullptr, 0, &end, 1, 0, &timeout);
            if (count > 0) return static_cast<pid_t>(end.ident);
            if (count == 0 || errno != EINTR) return std::nullopt;
        }
    }

  private:
    Descriptor queue_;
};

} // namespace

bool WorkspaceApplications::isRunning(const std::string& bundleID) const {
    @autoreleasepool {
        return !instancesOf(bundleID).empty();
    }
}

bool WorkspaceApplications::quit(const std::string& bundleID, std::chrono::milliseconds wait) {
    @autoreleasepool {
        const auto deadline = steady_clock::now() + wait;
        Ends ends;
        int awaited = 0;
        for (NSRunningApplication* instance : instancesOf(bundleID)) {
            const bool isFollowed = ends.follow(instance.processIdentifier); // before it is asked
            if ([instance terminate] && isFollowed) ++awaited;
        }
        // The system goes on listing a process for a moment after it has ended.
        std::set<pid_t> ended;
        for (; awaited > 0; --awaited)
            if (const auto process = ends.wait(deadline))
                ended.insert(*process);
            else
                break;
        const auto left = instancesOf(bundleID);
        return std::all_of(left.begin(), left.end(), [&](NSRunningApplication* each) {
            return ended.count(each.processIdentifier) > 0;
        });
    }
}

} // namespace tidwen

#include "host/script_notifications.h"

#include "base/text.h"
#include "operations/tool_paths.h"

#include <chrono>

namespace tidwen {

bool ScriptNotifications::post(const UserNotification& notification) {
    constexpr std::chrono::seconds timeout{10};
    // The words are passed beside the script, never in it, and after one that cannot be taken for an option.
    const auto result = processes_.run(
        toolPaths::osascript,
        {"-e", "on run words", "-e", "display notification (item 3 of words) with title (item 2 of words)",
         "-e", "end run", "tidwen", printable(notification.title), printable(notification.body)},
        timeout);
    return result && result->exitCode == 0;
}

} // namespace tidwen

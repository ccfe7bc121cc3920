#include "host/desktop_notifications.h"

#include "base/text.h"

#include <chrono>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace tidwen {

namespace {

constexpr std::chrono::seconds showWithin{5};

/// The service interprets simple markup in the body, so a hostile name is escaped.
std::string withoutMarkup(std::string_view text) {
    std::string result;
    for (const char c : printable(text)) {
        if (c == '<')
            result += "&lt;";
        else if (c == '&')
            result += "&amp;";
        else
            result += c;
    }
    return result;
}

} // namespace

NotificationState DesktopNotifications::state() const {
    const char* bus =
        std::getenv("DBUS_SESSION_BUS_ADDRESS"); // NOLINT(concurrency-mt-unsafe): nothing sets variables
    const bool isThere = bus && *bus && ::access(tool_.c_str(), X_OK) == 0;
    return isThere ? NotificationState::allowed : NotificationState::unavailable;
}

bool DesktopNotifications::post(const UserNotification& notification) {
    if (state() != NotificationState::allowed) return false;
    const auto result = processes_.run(
        tool_, {"--app-name=Tidwen", "--", printable(notification.title), withoutMarkup(notification.body)},
        showWithin);
    return result && result->exitCode == 0;
}

} // namespace tidwen

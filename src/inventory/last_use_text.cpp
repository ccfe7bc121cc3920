#include "inventory/last_use_text.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace tidwen {

std::optional<Message> describeLastUse(const InstalledApp& app, Timestamp now) {
    if (!app.usage) return std::nullopt;
    if (app.usage->isRunning) return Message{"home.used.running"};
    const auto& date = app.usage->evidence.date;
    if (!date) return std::nullopt;
    const auto days = std::chrono::duration_cast<std::chrono::days>(now - *date).count();
    const auto ago = [](const char* key, std::int64_t count) {
        return Message{key, {std::to_string(count)}};
    };
    if (days < 1) return Message{"home.used.today"};
    if (days < 2) return Message{"home.used.yesterday"};
    if (days < 14) return ago("home.used.days %lld", days);
    if (days < 61) return ago("home.used.weeks %lld", days / 7);
    if (days < 730) return ago("home.used.months %lld", days / 30);
    return ago("home.used.years %lld", days / 365);
}

} // namespace tidwen

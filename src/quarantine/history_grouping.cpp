#include "quarantine/history_grouping.h"

#include "base/text.h"
#include "quarantine/manifest.h"

#include <chrono>
#include <cstddef>
#include <optional>

namespace tidwen {

namespace {

std::optional<Timestamp> localDay(Timestamp moment) {
    constexpr std::size_t length = 10; // "2026-11-14"
    return parseIso8601(displayDate(moment).substr(0, length) + "T00:00:00Z");
}

} // namespace

HistoryGroup groupOf(const RemovalHistoryEntry& entry, Timestamp now) {
    const auto day = localDay(entry.manifest.createdAt), today = localDay(now);
    if (!day || !today) return HistoryGroup::month;
    if (*day == *today) return HistoryGroup::today;
    return *today - *day == std::chrono::days(1) ? HistoryGroup::yesterday : HistoryGroup::month;
}

std::string searchText(const RemovalHistoryEntry& entry) {
    std::string text;
    for (const auto& app : entry.manifest.apps)
        text += app.name + '\n' + app.bundleID + '\n';
    for (const auto& step : entry.manifest.entries)
        text += step.source + '\n';
    return folded(text);
}

} // namespace tidwen

#include "base/timestamp.h"

#include <ctime>
#include <fmt/core.h>

namespace tidwen {

namespace {

/// Reads `count` digits at `at` and advances it.
std::optional<int> digits(std::string_view text, std::size_t& at, std::size_t count) {
    if (text.size() - at < count) return std::nullopt;
    int value = 0;
    for (const auto end = at + count; at < end; ++at) {
        if (text[at] < '0' || text[at] > '9') return std::nullopt;
        value = value * 10 + (text[at] - '0');
    }
    return value;
}

/// Reads "dd?dd?dd" fields of the given widths, each followed by its character in `marks` (a space means
/// none).
template<std::size_t Count>
bool readFields(std::string_view text, std::size_t& at, const std::size_t (&widths)[Count],
                const char (&marks)[Count + 1], int (&values)[Count]) {
    for (std::size_t i = 0; i < Count; ++i) {
        const auto value = digits(text, at, widths[i]);
        if (!value) return false;
        values[i] = *value;
        if (marks[i] == ' ') continue;
        if (at >= text.size() || text[at] != marks[i]) return false;
        ++at;
    }
    return true;
}

/// The offset at the end of a date ("Z", "+01:00"); nothing may follow it.
std::optional<std::chrono::seconds> parseOffset(std::string_view text) {
    if (text == "Z") return std::chrono::seconds(0);
    if (text.empty() || (text.front() != '+' && text.front() != '-')) return std::nullopt;
    int values[2];
    std::size_t at = 1;
    if (!readFields(text, at, {2, 2}, ": ", values) || at != text.size()) return std::nullopt;
    if (values[0] > 23 || values[1] > 59) return std::nullopt;
    const std::chrono::seconds offset = std::chrono::hours(values[0]) + std::chrono::minutes(values[1]);
    return text.front() == '-' ? -offset : offset;
}

std::tm localTime(Timestamp moment) {
    const std::time_t seconds = moment.time_since_epoch().count();
    std::tm parts{};
    tzset(); // localtime_r need not read TZ itself
    localtime_r(&seconds, &parts);
    return parts;
}

} // namespace

std::string iso8601(Timestamp moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(moment - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

std::optional<Timestamp> parseIso8601(std::string_view text) {
    int values[6];
    std::size_t at = 0;
    if (!readFields(text, at, {4, 2, 2, 2, 2, 2}, "--T:: ", values)) return std::nullopt;
    const auto offset = parseOffset(text.substr(at));
    const std::chrono::year_month_day date{std::chrono::year(values[0]),
                                           std::chrono::month(static_cast<unsigned>(values[1])),
                                           std::chrono::day(static_cast<unsigned>(values[2]))};
    if (!offset || !date.ok() || values[3] > 23 || values[4] > 59 || values[5] > 59) return std::nullopt;
    return std::chrono::sys_days(date) + std::chrono::hours(values[3]) + std::chrono::minutes(values[4])
           + std::chrono::seconds(values[5]) - *offset;
}

std::string folderStamp(Timestamp moment) {
    const auto parts = localTime(moment);
    return fmt::format("{:04}-{:02}-{:02} {:02}-{:02}-{:02}", parts.tm_year + 1900, parts.tm_mon + 1,
                       parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
}

std::string displayDate(Timestamp moment) {
    const auto parts = localTime(moment);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                       parts.tm_hour, parts.tm_min);
}

Timestamp SystemClock::now() const {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

} // namespace tidwen

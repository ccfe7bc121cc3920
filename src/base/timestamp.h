#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// A point in time in whole seconds, UTC: the precision of every date that Tidwen writes.
using Timestamp = std::chrono::sys_seconds;

/// "2026-11-14T17:26:00Z".
std::string iso8601(Timestamp moment);

/// Parses what `iso8601` writes, also with an offset ("+01:00"); nullopt for anything else.
std::optional<Timestamp> parseIso8601(std::string_view text);

/// "2026-11-14 17-26-00" in the local time zone of this machine (respects TZ).
std::string folderStamp(Timestamp moment);

/// "2026-11-14 17:26" in the local time zone, for lists that people read.
std::string displayDate(Timestamp moment);

/// Source of the current time for services, so that tests can set it.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual Timestamp now() const = 0;
};

class SystemClock : public Clock {
  public:
    Timestamp now() const override;
};

} // namespace tidwen

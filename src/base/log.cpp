#include "base/log.h"

#include "base/text.h"

#include <cstdio>

namespace tidwen {

namespace {

const char* levelName(LogLevel level) {
    switch (level) {
    case LogLevel::debug:
        return "debug";
    case LogLevel::info:
        return "info";
    case LogLevel::warning:
        return "warning";
    case LogLevel::error:
        return "error";
    }
    return "error";
}

} // namespace

void StandardErrorLog::write(LogLevel level, std::string_view line) {
    if (level < threshold_) return;
    const auto whole = fmt::format("tidwen: {}: {}\n", levelName(level), printable(line));
    // One call, so that lines of two threads are not interleaved.
    std::fwrite(whole.data(), 1, whole.size(), stderr);
}

} // namespace tidwen

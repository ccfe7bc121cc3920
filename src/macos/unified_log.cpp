#include "macos/unified_log.h"

#include <os/log.h>
#include <string>
#include <string_view>

namespace tidwen {

namespace {

os_log_type_t typeOf(LogLevel level) {
    switch (level) {
    case LogLevel::debug:
        return OS_LOG_TYPE_DEBUG;
    case LogLevel::info:
        return OS_LOG_TYPE_INFO;
    case LogLevel::warning:
        return OS_LOG_TYPE_DEFAULT;
    case LogLevel::error:
        break;
    }
    return OS_LOG_TYPE_ERROR;
}

} // namespace

UnifiedLog::UnifiedLog(const std::string& subsystem) : log_(os_log_create(subsystem.c_str(), "tidwen")) {}

void UnifiedLog::write(LogLevel level, std::string_view line) {
    const std::string text(line);
    os_log_with_type(static_cast<os_log_t>(log_), typeOf(level), "%{public}s", text.c_str());
}

} // namespace tidwen

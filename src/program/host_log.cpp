#include "program/host_log.h"

#include <string>
#include <string_view>

#ifdef __APPLE__
#include "macos/unified_log.h"
#include "scan/applications/app_target.h"
#endif

namespace tidwen {

namespace {

std::unique_ptr<Log> systemLog() {
#ifdef __APPLE__
    return std::make_unique<UnifiedLog>(std::string(tidwenBundleID));
#else
    return nullptr;
#endif
}

} // namespace

HostLog::HostLog(LogLevel threshold) : standardError_(threshold), system_(systemLog()) {}

void HostLog::write(LogLevel level, std::string_view line) {
    standardError_.write(level, line);
    if (system_) system_->write(level, line);
}

} // namespace tidwen

#pragma once

#include "base/log.h"

#include <os/log.h>
#include <string>
#include <string_view>

namespace tidwen {

/// The log of macOS, as `log show --predicate 'subsystem == "com.corvella.tidwen"'` prints it. Lines are
/// public: they name paths and identifiers of leftovers, which whoever looks for a fault needs.
class UnifiedLog : public Log {
  public:
    explicit UnifiedLog(const std::string& subsystem) : log_(os_log_create(subsystem.c_str(), "tidwen")) {}
    void write(LogLevel level, std::string_view line) override;

  private:
    os_log_t log_; ///< lives as long as the process
};

} // namespace tidwen

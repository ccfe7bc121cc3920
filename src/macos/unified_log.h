#pragma once

#include "base/log.h"

#include <string>
#include <string_view>

namespace tidwen {

/// The log of macOS, as `log show --predicate 'subsystem == "com.corvella.tidwen"'` prints it. Lines are
/// public: they name paths and identifiers of leftovers, which whoever looks for a fault needs.
class UnifiedLog : public Log {
  public:
    explicit UnifiedLog(const std::string& subsystem);
    void write(LogLevel level, std::string_view line) override;

  private:
    void* log_; ///< lives as long as the process; its own type is another in Objective-C++
};

} // namespace tidwen

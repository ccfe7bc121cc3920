#pragma once

#include "base/log.h"

#include <memory>
#include <string_view>

namespace tidwen {

/// The log of the terminal: standard error, and on a Mac its unified log too, which gets every line and which
/// is all that is left of a program that launchd started.
class HostLog : public Log {
  public:
    /// `threshold`: of the lines that are written to standard error.
    explicit HostLog(LogLevel threshold);
    void write(LogLevel level, std::string_view line) override;

  private:
    StandardErrorLog standardError_;
    std::unique_ptr<Log> system_; ///< none where the system keeps no log for programs
};

} // namespace tidwen

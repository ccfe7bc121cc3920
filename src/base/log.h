#pragma once

#include <fmt/core.h>
#include <string>
#include <string_view>

namespace tidwen {

/// Severity of a log line. `debug` is for development; `error` needs attention.
enum class LogLevel { debug, info, warning, error };

/// Destination of log lines: the unified log on a Mac, standard error in the terminal, a list in tests.
/// Thread-safe.
class Log {
  public:
    virtual ~Log() = default;
    virtual void write(LogLevel level, std::string_view line) = 0;

    template<class... Args>
    void info(fmt::format_string<Args...> format, Args&&... args) {
        write(LogLevel::info, fmt::format(format, std::forward<Args>(args)...));
    }
    template<class... Args>
    void warning(fmt::format_string<Args...> format, Args&&... args) {
        write(LogLevel::warning, fmt::format(format, std::forward<Args>(args)...));
    }
    template<class... Args>
    void error(fmt::format_string<Args...> format, Args&&... args) {
        write(LogLevel::error, fmt::format(format, std::forward<Args>(args)...));
    }
};

/// Writes lines of at least `threshold` to standard error, with control characters escaped.
class StandardErrorLog : public Log {
  public:
    explicit StandardErrorLog(LogLevel threshold) : threshold_(threshold) {}
    void write(LogLevel level, std::string_view line) override;

  private:
    LogLevel threshold_;
};

} // namespace tidwen

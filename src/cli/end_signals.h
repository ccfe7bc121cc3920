#pragma once

#include "base/executor.h"

#include <array>
#include <csignal>
#include <functional>
#include <thread>

namespace tidwen {

/// While it lives, the first SIGINT, SIGTERM or SIGHUP calls `asked` through the main executor instead of
/// ending the program; a second one ends it. Only one instance at a time.
class EndSignals {
  public:
    EndSignals(Executor& main, std::function<void()> asked);
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

  private:
    static constexpr std::array<int, 3> numbers = {SIGINT, SIGTERM, SIGHUP};

    std::array<struct sigaction, numbers.size()> before_{};
    std::array<int, 2> pipe_ = {-1, -1}; ///< the handler writes, the thread reads
    std::thread thread_;
};

} // namespace tidwen

#pragma once

#include "base/step_progress.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

/// The steps of one kind in a removal.
struct RemovalPhase {
    enum class State { toCome, atWork, done };

    std::string kind; ///< as in `StepProgress`
    std::size_t done = 0;
    std::size_t total = 0;
    State state = State::toCome;
    friend bool operator==(const RemovalPhase&, const RemovalPhase&) = default;
};

/// What a removal consists of, so that all of it is known while a step is reported.
class RemovalPhases {
  public:
    RemovalPhases() = default;
    /// `kinds`: of all steps, in the order in which they run.
    explicit RemovalPhases(std::vector<std::string> kinds) : kinds_(std::move(kinds)) {}

    /// By the first step of each, with the work after the last step. `step`: nullopt before the first one.
    std::vector<RemovalPhase> at(const std::optional<StepProgress>& step) const;

    friend bool operator==(const RemovalPhases&, const RemovalPhases&) = default;

  private:
    std::size_t doneBefore(const StepProgress& step) const;

    std::vector<std::string> kinds_;
};

} // namespace tidwen

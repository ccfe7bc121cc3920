#pragma once

#include "base/stop_token.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tidwen {

/// Progress of work that is done in steps.
struct StepProgress {
    std::size_t step = 0;  ///< the current step, from 1
    std::size_t total = 0; ///< never less than `step`
    std::string kind = {}; ///< the kind of step as named in JSON: "move", "administrator" …
    std::string item = {}; ///< what the step works on, a path or a name; empty where the kind says everything
    /// Bytes of the current item copied so far to another disk. Holes are not copied and not counted.
    std::uint64_t copiedBytes = 0;
    friend bool operator==(const StepProgress&, const StepProgress&) = default;
};

/// Called on the working thread before each step and from time to time while it copies.
using OnStep = std::function<void(const StepProgress&)>;

/// Lets the caller follow stepwise work and stop it after the current step.
struct StepControl {
    StopToken stop = {};
    OnStep onStep = {};

    bool isStopped() const { return stop.stopRequested(); }
    void report(const StepProgress& progress) const {
        if (onStep) onStep(progress);
    }
};

} // namespace tidwen

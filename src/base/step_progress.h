#pragma once

#include "base/stop_token.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tidwen {

/// How far work has come that is done in steps.
struct StepProgress {
    std::size_t step = 0;  ///< the one at hand, from 1
    std::size_t total = 0; ///< never less than `step`
    std::string kind = {}; ///< what the step does, as it is called in JSON: "move", "administrator" …
    std::string item = {}; ///< what it is done to; a path or a name, empty where the kind says it all
    /// Of the item at hand, while it is copied to another disk. Zeros that are holes are not copied.
    std::uint64_t copiedBytes = 0;
    friend bool operator==(const StepProgress&, const StepProgress&) = default;
};

/// Called by the thread that works, before each step, and now and then while it copies.
using OnStep = std::function<void(const StepProgress&)>;

/// How whoever starts such work follows it, and ends it after the step at hand.
struct StepControl {
    StopToken stop = {};
    OnStep onStep = {};

    bool isStopped() const { return stop.stopRequested(); }
    void tell(const StepProgress& progress) const {
        if (onStep) onStep(progress);
    }
};

} // namespace tidwen

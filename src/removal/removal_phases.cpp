#include "removal/removal_phases.h"

#include "operations/stepwise_run.h"

#include <algorithm>

namespace tidwen {

namespace {

RemovalPhase& phaseOf(const std::string& kind, std::vector<RemovalPhase>& phases) {
    const auto known = std::ranges::find(phases, kind, &RemovalPhase::kind);
    return known != phases.end() ? *known : phases.emplace_back(RemovalPhase{.kind = kind});
}

} // namespace

/// Of a batch, which is reported with the number of its last step, nothing is known to be done yet.
std::size_t RemovalPhases::doneBefore(const StepProgress& step) const {
    if (step.kind == finishingStep) return kinds_.size();
    if (step.kind == administratorStep)
        return kinds_.size() - static_cast<std::size_t>(std::ranges::count(kinds_, step.kind));
    return step.step > 0 ? step.step - 1 : 0;
}

std::vector<RemovalPhase> RemovalPhases::at(const std::optional<StepProgress>& step) const {
    if (kinds_.empty()) return {};
    const auto done = step ? doneBefore(*step) : 0;
    std::vector<RemovalPhase> phases;
    for (std::size_t i = 0; i < kinds_.size(); ++i) {
        auto& phase = phaseOf(kinds_[i], phases);
        ++phase.total;
        if (i < done) ++phase.done;
    }
    phases.push_back({.kind = std::string(finishingStep)});
    for (auto& phase : phases) {
        using State = RemovalPhase::State;
        if (phase.done > 0 && phase.done == phase.total)
            phase.state = State::done;
        else if (phase.done > 0 || (step && step->kind == phase.kind))
            phase.state = State::atWork;
    }
    return phases;
}

} // namespace tidwen

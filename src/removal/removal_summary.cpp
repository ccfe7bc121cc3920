#include "removal/removal_summary.h"

#include "base/texts.h"

#include <variant>

namespace tidwen {

std::optional<std::string> RemovalSummary::Tier::sizeText(const Texts& texts) const {
    return size.isKnown ? std::optional(tidwen::sizeText(size, texts)) : std::nullopt;
}

RemovalSummary summarize(const std::vector<const Trace*>& selection) {
    RemovalSummary summary;
    for (const auto risk : {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive}) {
        RemovalSummary::Tier tier{.risk = risk};
        for (const auto* trace : selection) {
            if (trace->risk != risk || trace->reversibility == Reversibility::manualOnly) continue;
            ++tier.count;
            tier.size.add(trace->sizeBytes, trace->isSizePartial);
        }
        if (tier.count == 0) continue;
        summary.totalSize.add(tier.size);
        summary.totalCount += tier.count;
        summary.tiers.push_back(tier);
    }
    for (const auto* trace : selection) {
        if (trace->reversibility == Reversibility::manualOnly) continue;
        if (trace->reversibility == Reversibility::irreversibleDestructive)
            summary.permanent.push_back(*trace);
        if (std::holds_alternative<action::Bootout>(trace->action))
            ++summary.unloadedCount;
        else if (trace->reversibility == Reversibility::reversible)
            ++summary.movedCount;
        // Permission resets are the only harmless step that cannot be undone.
        if (trace->reversibility == Reversibility::irreversibleHarmless) summary.resetsPermissions = true;
        if (trace->requiresRoot) summary.requiresPassword = true;
    }
    return summary;
}

} // namespace tidwen

#include "removal/removal_summary.h"

#include "base/byte_count.h"

namespace tidwen {

RemovalSummary summarize(const std::vector<const Trace*>& selection, const std::string& locale) {
    RemovalSummary summary;
    std::int64_t totalBytes = 0;
    for (const auto risk : {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive}) {
        RemovalSummary::Tier tier{.risk = risk, .count = 0, .sizeText = std::nullopt};
        std::optional<std::int64_t> bytes;
        for (const auto* trace : selection) {
            if (trace->risk != risk || trace->reversibility == Reversibility::manualOnly) continue;
            ++tier.count;
            if (trace->sizeBytes) bytes = bytes.value_or(0) + *trace->sizeBytes;
        }
        if (tier.count == 0) continue;
        if (bytes) tier.sizeText = formatByteCount(*bytes, locale);
        totalBytes += bytes.value_or(0);
        summary.totalCount += tier.count;
        summary.tiers.push_back(std::move(tier));
    }
    for (const auto* trace : selection) {
        if (trace->reversibility == Reversibility::manualOnly) continue;
        if (trace->reversibility == Reversibility::irreversibleDestructive)
            summary.permanent.push_back(*trace);
        if (trace->reversibility == Reversibility::reversible) ++summary.reversibleCount;
        // The one thing that cannot be undone and harms nobody is a permission reset.
        if (trace->reversibility == Reversibility::irreversibleHarmless) summary.resetsPermissions = true;
        if (trace->requiresRoot) summary.requiresPassword = true;
    }
    summary.totalSizeText = formatByteCount(totalBytes, locale);
    return summary;
}

} // namespace tidwen

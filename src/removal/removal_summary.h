#pragma once

#include "scan/matching/trace.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

/// What the user is asked to confirm.
struct RemovalSummary {
    struct Tier {
        TraceRisk risk = TraceRisk::safe;
        int count = 0;
        std::optional<std::string> sizeText; ///< absent when no size is known
        friend bool operator==(const Tier&, const Tier&) = default;
    };

    std::vector<Tier> tiers; ///< safe, review, sensitive; none empty
    int totalCount = 0;
    std::string totalSizeText;
    std::vector<Trace> permanent; ///< what is lost for good
    int reversibleCount = 0;
    bool requiresPassword = false;
    bool resetsPermissions = false;
};

/// Traces that only the user himself can deal with do not count.
RemovalSummary summarize(const std::vector<const Trace*>& selection, const std::string& locale = "en");

} // namespace tidwen

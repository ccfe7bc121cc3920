#pragma once

#include "base/byte_sum.h"
#include "base/texts.h"
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
        ByteSum size = {};

        std::optional<std::string> sizeText(const Texts& texts) const; ///< absent when no size is known
        friend bool operator==(const Tier&, const Tier&) = default;
    };

    std::vector<Tier> tiers; ///< safe, review, sensitive; none empty
    int totalCount = 0;
    ByteSum totalSize;
    std::vector<Trace> permanent; ///< what is lost permanently
    int movedCount = 0;           ///< to the Trash; an undo brings them back
    int unloadedCount = 0;        ///< jobs without a file to move; an undo loads them again
    bool requiresPassword = false;
    bool resetsPermissions = false;
    bool keepsPathPermissions = false; ///< some were given to a program by its path, which no reset reaches

    std::string totalSizeText(const Texts& texts) const { return sizeText(totalSize, texts); }
};

/// Does not count traces that only the user can remove.
RemovalSummary summarize(const std::vector<const Trace*>& selection);

} // namespace tidwen

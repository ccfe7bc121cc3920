#include "sweep/leftover_filter.h"

#include "base/text.h"

namespace tidwen {

bool LeftoverFilter::isActive() const {
    return !trimmed(query).empty() || !risks.empty() || category || floor != SizeFloor::any;
}

bool LeftoverFilter::passes(const Trace& trace) const {
    if (trace.reversibility == Reversibility::manualOnly) return false;
    if (!risks.empty() && !risks.contains(trace.risk)) return false;
    if (category && trace.category != *category) return false;
    if (trace.sizeBytes && *trace.sizeBytes < minimumBytes(floor)) return false;
    const auto sought = folded(trimmed(query));
    return sought.empty() || folded(trace.displayName).find(sought) != std::string::npos;
}

std::int64_t minimumBytes(LeftoverFilter::SizeFloor floor) {
    switch (floor) {
    case LeftoverFilter::SizeFloor::any:
        return 0;
    case LeftoverFilter::SizeFloor::mb1:
        return 1'000'000;
    case LeftoverFilter::SizeFloor::mb10:
        return 10'000'000;
    case LeftoverFilter::SizeFloor::mb100:
        return 100'000'000;
    }
    return 0;
}

std::string_view name(LeftoverFilter::Order order) {
    return order == LeftoverFilter::Order::largest ? "largest" : "name";
}

std::optional<LeftoverFilter::Order> parseOrder(std::string_view text) {
    for (const auto order : {LeftoverFilter::Order::largest, LeftoverFilter::Order::name})
        if (name(order) == text) return order;
    return std::nullopt;
}

} // namespace tidwen

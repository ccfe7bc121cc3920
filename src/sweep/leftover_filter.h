#pragma once

#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tidwen {

/// Filters and sorts a list of leftovers.
struct LeftoverFilter {
    enum class SizeFloor { any, mb1, mb10, mb100 };
    enum class Order { largest, name };

    std::string query = {};                     ///< free text; surrounding white space is ignored
    std::set<TraceRisk> risks = {};             ///< empty: all
    std::optional<TraceCategory> category = {}; ///< absent: all
    SizeFloor floor = SizeFloor::any;
    Order order = Order::largest;

    friend bool operator==(const LeftoverFilter&, const LeftoverFilter&) = default;

    /// Whether it filters anything: distinguishes an empty list from a list in which nothing matches.
    bool isActive() const;
    bool passes(const Trace& trace) const;
};

inline constexpr std::array allSizeFloors = {LeftoverFilter::SizeFloor::any, LeftoverFilter::SizeFloor::mb1,
                                             LeftoverFilter::SizeFloor::mb10,
                                             LeftoverFilter::SizeFloor::mb100};

/// In bytes, of decimal megabytes; 0 for `any`.
std::int64_t minimumBytes(LeftoverFilter::SizeFloor floor);

std::string_view name(LeftoverFilter::Order order);
std::optional<LeftoverFilter::Order> parseOrder(std::string_view text);

} // namespace tidwen

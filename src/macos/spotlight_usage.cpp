#include "macos/spotlight_usage.h"

#include "base/path.h"
#include "base/timestamp.h"
#include "macos/core_foundation.h"
#include "platform/usage_records.h"

#include <CoreServices/CoreServices.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>

namespace tidwen {

namespace {

constexpr double year9999 = 253'402'300'800; // in seconds since 1970

std::optional<Timestamp> dateOf(CFTypeRef value) {
    if (!value || CFGetTypeID(value) != CFDateGetTypeID()) return std::nullopt;
    const double seconds =
        CFDateGetAbsoluteTime(static_cast<CFDateRef>(value)) + kCFAbsoluteTimeIntervalSince1970;
    const bool isDate = seconds > 0 && seconds < year9999; // which NaN is not
    if (!isDate) return std::nullopt;
    return Timestamp(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

std::optional<int> countOf(CFTypeRef value) {
    std::int64_t count = -1;
    if (!value || CFGetTypeID(value) != CFNumberGetTypeID()
        || !CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &count))
        return std::nullopt;
    if (count < 0 || count > std::numeric_limits<int>::max()) return std::nullopt;
    return static_cast<int>(count);
}

} // namespace

UsageRecord SpotlightUsage::of(const Path& item) const {
    const auto path = makeString(item.string());
    if (!path) return {};
    const CFOwned entry(MDItemCreate(nullptr, path.get()));
    if (!entry) return {};
    // No header names the count, and recent systems may have stopped to fill it.
    const auto useCount = makeString("kMDItemUseCount");
    const CFOwned date(MDItemCopyAttribute(entry.get(), kMDItemLastUsedDate));
    const CFOwned count(MDItemCopyAttribute(entry.get(), useCount.get()));
    return {dateOf(date.get()), countOf(count.get())};
}

} // namespace tidwen

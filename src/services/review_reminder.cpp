#include "services/review_reminder.h"

#include "base/property_list.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace tidwen {

int ReviewReminder::count() const {
    const auto stored = defaults_.value(countKey);
    const auto number = stored ? stored->asInteger() : std::nullopt;
    return static_cast<int>(std::clamp<std::int64_t>(number.value_or(0), 0, removalsBefore));
}

bool ReviewReminder::askedInThisVersion() const {
    const auto stored = defaults_.value(versionKey);
    const auto* version = stored ? stored->asString() : nullptr;
    return version && *version == version_;
}

void ReviewReminder::removalEnded(bool withoutFailure) {
    if (!withoutFailure || askedInThisVersion()) return;
    const int removals = std::min(count() + 1, removalsBefore);
    if (removals < removalsBefore || !prompt_.canShow()) {
        defaults_.setValue(countKey, PropertyListValue(removals));
        return;
    }
    // Stored first: otherwise a failure to store would repeat the question after every removal.
    if (!defaults_.setValue(versionKey, PropertyListValue(version_))) return;
    defaults_.setValue(countKey, std::nullopt);
    prompt_.show();
}

} // namespace tidwen

#pragma once

#include "platform/defaults.h"
#include "platform/review_prompt.h"

#include <string>

namespace tidwen {

/// Asks for a review after the fifth removal without failure, at most once per version. If no one would see
/// it, it waits for the next removal. A new version starts counting again.
class ReviewReminder {
  public:
    static constexpr const char* countKey = "tidwen.removalsSinceReview";
    static constexpr const char* versionKey = "tidwen.reviewAskedInVersion";
    static constexpr int removalsBefore = 5;

    ReviewReminder(Defaults& defaults, ReviewPrompt& prompt, std::string version)
        : defaults_(defaults), prompt_(prompt), version_(std::move(version)) {}

    /// Call it after the report of each removal has been shown.
    void removalEnded(bool withoutFailure);

  private:
    int count() const;
    bool askedInThisVersion() const;

    Defaults& defaults_;
    ReviewPrompt& prompt_;
    std::string version_;
};

} // namespace tidwen

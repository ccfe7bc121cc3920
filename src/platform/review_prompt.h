#pragma once

namespace tidwen {

/// Asks the user for a review of the program.
class ReviewPrompt {
  public:
    virtual ~ReviewPrompt() = default;
    /// Whether a user is there to see it.
    virtual bool canShow() const = 0;
    virtual void show() = 0;
};

} // namespace tidwen

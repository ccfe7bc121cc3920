#pragma once

namespace tidwen {

/// Asks the user kindly for a review of the program.
class ReviewPrompt {
  public:
    virtual ~ReviewPrompt() = default;
    /// Whether somebody is there who would see it.
    virtual bool canShow() const = 0;
    virtual void show() = 0;
};

} // namespace tidwen

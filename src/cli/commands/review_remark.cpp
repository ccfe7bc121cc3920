#include "cli/commands/review_remark.h"

#include "cli/console.h"
#include "services/review_reminder.h"

namespace tidwen {

namespace {

class ReviewRemark : public ReviewPrompt {
  public:
    explicit ReviewRemark(const CommandContext& context) : context_(context) {}

    bool canShow() const override { return !context_.arguments.json && context_.console.showsRemarks(); }
    void show() override { context_.console.remark(context_.text("review.reminder")); }

  private:
    const CommandContext& context_;
};

} // namespace

void remindOfReview(const CommandContext& context, Defaults& defaults, bool withoutFailure) {
    ReviewRemark remark(context);
    ReviewReminder(defaults, remark, std::string(programVersion())).removalEnded(withoutFailure);
}

} // namespace tidwen

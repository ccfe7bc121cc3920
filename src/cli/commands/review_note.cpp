#include "cli/commands/review_note.h"

#include "cli/arguments.h"
#include "cli/console.h"
#include "platform/defaults.h"
#include "platform/review_prompt.h"
#include "services/review_reminder.h"

#include <string>

namespace tidwen {

namespace {

class ReviewNote : public ReviewPrompt {
  public:
    explicit ReviewNote(const CommandContext& context) : context_(context) {}

    bool canShow() const override { return !context_.arguments.json && context_.console.showsNotes(); }
    void show() override { context_.console.note(context_.text("review.reminder")); }

  private:
    const CommandContext& context_;
};

} // namespace

void remindOfReview(const CommandContext& context, Defaults& defaults, bool withoutFailure) {
    ReviewNote note(context);
    ReviewReminder(defaults, note, std::string(programVersion())).removalEnded(withoutFailure);
}

} // namespace tidwen

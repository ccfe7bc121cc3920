#include "services/updates_model.h"

#include "base/background_step.h"
#include "services/update_feed.h"

#include <tl/expected.hpp>
#include <utility>

namespace tidwen {

void UpdatesModel::check(std::function<void()> done) {
    if (done) done_.push_back(std::move(done));
    if (!isChecking.set(true)) return;
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&fetcher = ports_.fetcher, &log = ports_.log, settings = settings_()]() mutable {
            return UpdateCheck(fetcher, log, std::move(settings)).check();
        },
        [](UpdatesModel& self, tl::expected<UpdateAnswer, UpdateError> found) {
            self.error.set(found ? std::nullopt : std::optional(found.error()));
            if (found) self.answer.set(std::move(*found));
            self.isChecking.set(false);
            for (const auto& call : std::exchange(self.done_, {}))
                call();
        });
}

} // namespace tidwen

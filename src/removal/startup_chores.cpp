#include "removal/startup_chores.h"

#include "base/background_step.h"
#include "base/message.h"
#include "base/path.h"
#include "platform/user_environment.h"
#include "quarantine/trash_lock.h"

#include <algorithm>
#include <functional>
#include <tl/expected.hpp>
#include <utility>

namespace tidwen {

StartupChores::StartupChores(Services services, UserEnvironment user)
    : services_(services), user_(std::move(user)), work_(services.main, progress) {}

void StartupChores::run() {
    start(Purge::expired);
}

void StartupChores::recover() {
    start(Purge::nothing);
}

void StartupChores::start(Purge purge) {
    struct Outcome {
        int purged = 0;
        tl::expected<RecoveryOutcome, Message> recovery;
    };
    if (std::exchange(hasStarted_, true)) return;
    const auto keptDays = purge == Purge::expired
                              ? days(quarantineRetention(services_.preferences.quarantineRetention.get()))
                              : 0;
    inBackground(
        *this, alive_, services_.background, services_.main,
        [services = services_, user = user_, control = work_.begin(), keptDays]() -> Outcome {
            if (!services.files.exists(user.trash())) return {}; // do not create the Trash just to look
            const auto lock = lockTrash(user, services.files);
            if (!lock) // what another Tidwen does there is not interrupted
                return {0, tl::unexpected(lock.error())};
            const int purged = services.purge.purgeExpired(keptDays, services.clock.now(), control);
            return {purged,
                    recoverInterruptedRemovals(user, services.files, services.clock, services.log, control)};
        },
        [keptDays](StartupChores& self, Outcome outcome) {
            self.work_.end();
            if (outcome.purged > 0)
                self.purged_ = Message{"home.purged %lld %lld",
                                       {std::to_string(outcome.purged), std::to_string(keptDays)}};
            if (outcome.recovery) self.show(*outcome.recovery);
            self.recovery_ = std::move(outcome.recovery);
            self.changed.emit(ChoresChange::recovery);
        });
}

void StartupChores::show(const RecoveryOutcome& outcome) {
    for (const auto& manifest : outcome.recovered)
        recoveryNotices_.push_back({manifest, {}});
    for (const auto& run : outcome.unfinished)
        if (run.known) recoveryNotices_.push_back({*run.known, run.unsettled});
    std::ranges::stable_sort(recoveryNotices_, std::greater(),
                             [](const RecoveryNotice& notice) { return notice.manifest.createdAt; });
}

void StartupChores::dismissPurged() {
    purged_.reset();
    changed.emit(ChoresChange::notices);
}

void StartupChores::dismissRecoveryNotice() {
    if (recoveryNotices_.empty()) return;
    recoveryNotices_.erase(recoveryNotices_.begin());
    changed.emit(ChoresChange::notices);
}

void StartupChores::dismissRecoveryNotice(const Path& root) {
    const auto isOfRun = [&](const RecoveryNotice& each) { return each.manifest.quarantineRoot == root; };
    if (std::erase_if(recoveryNotices_, isOfRun) > 0) changed.emit(ChoresChange::notices);
}

void StartupChores::forgetUndo() {
    undoReport_.reset();
    error_.reset();
    undoneApps_.clear();
    changed.emit(ChoresChange::undo);
}

void StartupChores::undoRecovered() {
    if (isUndoing_ || recoveryNotices_.empty()) return;
    const auto& run = recoveryNotices_.front().manifest;
    const auto root = run.quarantineRoot;
    isUndoing_ = true;
    undoReport_.reset();
    error_.reset();
    undoneApps_ = run.apps;
    changed.emit(ChoresChange::undo);
    inBackground(
        *this, alive_, services_.background, services_.main,
        [&service = services_.undo, root, control = work_.begin()] {
            return service.undoRun(root, {}, control);
        },
        [root](StartupChores& self, tl::expected<UndoReport, Message> outcome) {
            self.isUndoing_ = false;
            self.work_.end();
            if (outcome) {
                self.undoReport_ = std::move(*outcome);
                if (self.undoReport_->failures.empty()) self.dismissRecoveryNotice(root);
            } else {
                self.error_ = std::move(outcome.error());
            }
            self.changed.emit(ChoresChange::undo);
        });
}

} // namespace tidwen

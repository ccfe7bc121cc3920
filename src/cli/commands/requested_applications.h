#pragma once

#include "base/path.h"
#include "cli/command.h"
#include "program/mac.h"
#include "program/session.h"
#include "scan/applications/app_target.h"
#include "system/inbox_watcher.h"
#include "system/request_inbox.h"

#include <memory>
#include <vector>

namespace tidwen {

/// The inbox of the Mac's user, in the folder of this program's application group.
RequestInbox requestInbox(const CommandContext& context, const Mac& mac);

/// Checks each path as if it had been typed, reports those that are refused and returns the others.
struct JudgedRequest {
    std::vector<AppTarget> targets;
    bool someRefused = false;
};
JudgedRequest judgeRequest(const std::vector<Path>& paths, const CommandContext& context, const Mac& mac);

/// Reports requested items that do not exist, and files that contain no request.
void reportRefused(const RequestInbox::Drained& requests, const CommandContext& context);

/// While it lives, shows each application whose removal another process requests, and the command for it.
/// Nothing is removed until the user types that command.
class RequestedApplications {
  public:
    RequestedApplications(const CommandContext& context, Session& session);
    /// If the inbox cannot be watched, this is logged, and waiting requests are shown anyway.
    void start() { watcher_->start(); }

  private:
    void show(const RequestInbox::Drained& requests) const;

    const CommandContext& context_;
    const Mac& mac_;
    std::unique_ptr<InboxWatcher> watcher_;
};

} // namespace tidwen

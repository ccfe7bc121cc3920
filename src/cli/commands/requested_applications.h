#pragma once

#include "cli/command.h"
#include "program/session.h"

#include <memory>
#include <vector>

namespace tidwen {

/// The inbox of the Mac's user, in the folder of this program's application group.
RequestInbox requestInbox(const CommandContext& context, const Mac& mac);

/// Judges each path as if it had been typed, reports those that are refused and gives the others.
struct JudgedRequest {
    std::vector<AppTarget> targets;
    bool someRefused = false;
};
JudgedRequest judgeRequest(const std::vector<Path>& paths, const CommandContext& context, const Mac& mac);

/// Complains of what was asked for and is not there, and of what held no request.
void reportRefused(const RequestInbox::Drained& requests, const CommandContext& context);

/// While it lives, shows each application that another process asks to remove, and how to do it. Nothing is
/// removed without its user typing that.
class RequestedApplications {
  public:
    RequestedApplications(const CommandContext& context, Session& session);
    /// An inbox that cannot be watched is logged, and what waits in it shown all the same.
    void start() { watcher_->start(); }

  private:
    void show(const RequestInbox::Drained& requests) const;

    const CommandContext& context_;
    const Mac& mac_;
    std::unique_ptr<InboxWatcher> watcher_;
};

} // namespace tidwen

#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
#include "platform/file_system.h"
#include "platform/folder_events.h"
#include "system/request_inbox.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tidwen {

/// Serves the requests waiting in the inbox and those that arrive during its lifetime. While requests cannot
/// be served they stay in the folder, so that none is lost even if the program ends. Main thread only; the
/// folder is read on a queue.
class InboxWatcher {
  public:
    struct Ports {
        FileSystem& files;
        FolderEvents& events;
        Executor& main;
        Executor& queue; ///< serial
        Log& log;
    };
    /// Receives the result of `RequestInbox::drain`, refusals included; never an empty one.
    using OnRequest = std::function<void(const RequestInbox::Drained&)>;

    InboxWatcher(Ports ports, RequestInbox inbox, OnRequest onRequest);

    /// Number of requests waiting because they cannot be served now.
    Property<std::size_t> waiting;

    /// Creates the inbox folder if it is missing, so that it can be watched, and serves what is waiting.
    void start();
    /// Looks now instead of waiting for a change: after this process itself has posted a request.
    void look();
    /// Whether requests cannot be served now, for example during a removal. When it ends, waiting ones are
    /// served.
    void setBusy(bool isBusy);
    /// Is busy from now on while `takesRequests` is false.
    void follow(Property<bool>& takesRequests);
    bool isWatching() const { return watch_ != nullptr; }

  private:
    using FolderIdentity = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode

    /// The result of one look at the folder, made on the queue.
    struct Look {
        std::optional<FolderIdentity> folder;
        std::unique_ptr<FolderEvents::Watch> watch; ///< of a folder that was not watched before
        RequestInbox::Drained drained;
        std::size_t waiting = 0; ///< number of requests left in the folder
    };
    struct FolderTask;

    void finish(Look look);
    void serveHeld();

    Ports ports_;
    RequestInbox inbox_;
    OnRequest onRequest_;
    Subscription following_;
    bool isStarted_ = false;
    bool isBusy_ = false;
    bool isLooking_ = false;
    bool looksAgain_ = false;
    std::vector<RequestInbox::Drained> held_; ///< taken from the folder, not yet served
    std::optional<FolderIdentity> watched_;
    std::unique_ptr<FolderEvents::Watch> watch_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen

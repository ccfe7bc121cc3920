#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
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

/// Serves the requests that wait in the inbox, and each that comes while this object lives. While nobody can
/// be served, requests stay where they are, so that not even the end of the program loses one. Belongs to
/// the main thread; the folder is read on a queue.
class InboxWatcher {
  public:
    struct Ports {
        FileSystem& files;
        FolderEvents& events;
        Executor& main;
        Executor& queue; ///< serial
        Log& log;
    };
    /// Gets what `RequestInbox::drain` gives, refusals included, never nothing.
    using OnRequest = std::function<void(const RequestInbox::Drained&)>;

    InboxWatcher(Ports ports, RequestInbox inbox, OnRequest onRequest);

    /// How many requests wait because nobody can be served.
    Property<std::size_t> waiting;

    /// Creates the folder of the inbox when it is missing, so that it can be watched, and serves what waits
    /// in it.
    void start();
    /// Looks now, without waiting to be told of a change: after this process itself has posted a request.
    void look();
    /// Whether requests cannot be served: a removal runs, say. Afterwards those that came are.
    void setBusy(bool isBusy);
    /// Is busy from now on whenever `isBusy` says so, which is asked after each `changed`.
    void follow(Signal<>& changed, std::function<bool()> isBusy);
    bool isWatching() const { return watch_ != nullptr; }

  private:
    using FolderIdentity = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode

    /// What one look at the folder, on the queue, found out and did.
    struct Look {
        std::optional<FolderIdentity> folder;
        std::unique_ptr<FolderEvents::Watch> watch; ///< of a folder that was not watched before
        RequestInbox::Drained drained;
        std::size_t waiting = 0; ///< of requests that were left alone
    };
    struct Looker;

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
    std::vector<RequestInbox::Drained> held_; ///< taken out of the folder and not served yet
    std::optional<FolderIdentity> watched_;
    std::unique_ptr<FolderEvents::Watch> watch_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

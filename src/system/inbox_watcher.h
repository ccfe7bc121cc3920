#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "platform/folder_events.h"
#include "system/request_inbox.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tidwen {

/// Serves the requests that wait in the inbox, and each that comes while this object lives. Belongs to the
/// main thread.
class InboxWatcher {
  public:
    struct Ports {
        FileSystem& files;
        FolderEvents& events;
        Executor& main;
        Log& log;
    };
    using OnRequest = std::function<void(const std::vector<Path>&)>;

    /// `onRequest` gets what `RequestInbox::drain` gives, never nothing.
    InboxWatcher(Ports ports, RequestInbox& inbox, OnRequest onRequest);

    /// Creates the folder of the inbox when it is missing, so that it can be watched.
    void start();
    bool isWatching() const { return watch_ != nullptr; }

  private:
    using FolderIdentity = std::pair<std::uint64_t, std::uint64_t>; ///< device and inode

    void serve();
    void watch();
    std::optional<FolderIdentity> currentFolder() const;

    Ports ports_;
    RequestInbox& inbox_;
    OnRequest onRequest_;
    std::optional<FolderIdentity> watched_;
    std::unique_ptr<FolderEvents::Watch> watch_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

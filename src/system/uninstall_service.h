#pragma once

#include "base/log.h"
#include "system/request_inbox.h"

#include <functional>
#include <vector>

namespace tidwen {

/// What stands behind the Services menu (`uninstallWithTidwen:userData:error:` on a Mac): hands a selection
/// over through the inbox, so that a request of one's own is served like anybody else's.
class UninstallService {
  public:
    enum class Outcome {
        handedOver,
        noApplication, ///< no bundle in the selection
        notPosted,     ///< the inbox could not take the request
    };

    /// `drain` serves the inbox in this process right after a request; without it the one that watches does.
    UninstallService(RequestInbox& inbox, Log& log, std::function<void()> drain = {})
        : inbox_(inbox), log_(log), drain_(std::move(drain)) {}

    /// Application bundles are told by their extension alone; the rest of the selection is left out.
    Outcome handOver(const std::vector<Path>& selection);

  private:
    RequestInbox& inbox_;
    Log& log_;
    std::function<void()> drain_;
};

} // namespace tidwen

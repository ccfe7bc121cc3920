#pragma once

#include "base/log.h"
#include "base/path.h"
#include "system/request_inbox.h"

#include <functional>
#include <vector>

namespace tidwen {

/// Implements the Services menu item (`uninstallWithTidwen:userData:error:` on a Mac): posts the selection to
/// the inbox, so that this program's own requests are served like any others.
class UninstallService {
  public:
    enum class Outcome {
        handedOver,
        noApplication, ///< no bundle in the selection
        notPosted,     ///< the inbox did not accept the request
    };

    /// `drain` serves the inbox in this process right after a request; without it the process that watches
    /// does.
    UninstallService(RequestInbox& inbox, Log& log, std::function<void()> drain = {})
        : inbox_(inbox), log_(log), drain_(std::move(drain)) {}

    /// Recognizes application bundles by their extension alone; other selected items are ignored.
    Outcome handOver(const std::vector<Path>& selection);

  private:
    RequestInbox& inbox_;
    Log& log_;
    std::function<void()> drain_;
};

} // namespace tidwen

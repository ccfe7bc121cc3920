#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
#include "platform/https_fetcher.h"
#include "services/update_check.h"
#include "services/update_feed.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tidwen {

/// Whether there is a newer version, for display. Checks only when told to. Main thread only; network access
/// is in the background.
class UpdatesModel {
  public:
    struct Ports {
        HttpsFetcher& fetcher;
        Log& log;
        Executor& main;
        Executor& background;
    };
    /// Returns the present settings; called on the main thread when a check begins.
    using Settings = std::function<UpdateSettings()>;

    UpdatesModel(Ports ports, Settings settings) : ports_(ports), settings_(std::move(settings)) {}

    Property<bool> isChecking;
    Property<std::optional<UpdateAnswer>> answer; ///< of the last successful check
    Property<std::optional<UpdateError>> error;   ///< why the last check failed; nullopt after success

    /// `done` is called on the main thread when everything is published. A call during a check joins it.
    void check(std::function<void()> done = {});

  private:
    Ports ports_;
    Settings settings_;
    std::vector<std::function<void()>> done_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< checked by results that arrive late
};

} // namespace tidwen

#pragma once

#include "base/executor.h"
#include "base/observable.h"
#include "services/update_check.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tidwen {

/// Whether there is a newer version, while somebody looks. Asks only when it is told to. Belongs to the main
/// thread; the network is waited for in the background.
class UpdatesModel {
  public:
    struct Ports {
        HttpsFetcher& fetcher;
        Log& log;
        Executor& main;
        Executor& background;
    };
    /// What holds now; called on the main thread when a check begins.
    using Settings = std::function<UpdateSettings()>;

    UpdatesModel(Ports ports, Settings settings) : ports_(ports), settings_(std::move(settings)) {}

    Property<bool> isChecking;
    Property<std::optional<UpdateAnswer>> answer; ///< of the last check that was answered
    Property<std::optional<UpdateError>> error;   ///< why the last check was not; nothing when it was

    /// `done` is called on the main thread when everything is published. A check that is going on serves this
    /// call, too.
    void check(std::function<void()> done = {});

  private:
    Ports ports_;
    Settings settings_;
    std::vector<std::function<void()>> done_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

#pragma once

#include "base/executor.h"
#include "program/host_services.h"
#include "program/running_mac.h"
#include "program/volume_mac.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Opens Macs in the background: what lies on a disk may be slow to answer. Belongs to the main thread.
class MacOpener {
  public:
    struct Opened {
        std::unique_ptr<OwnedMac> mac;
        std::string name; ///< of its folder
    };
    using Then = std::function<void(tl::expected<Opened, Message>)>;

    /// What is passed outlives this.
    MacOpener(HostServices& host, const Texts& texts, Log& log, Executor& main, Executor& background)
        : host_(host), texts_(texts), log_(log), main_(main), background_(background) {}

    /// `then` is called on the main thread, unless this is gone by then.
    void open(std::filesystem::path folder, std::optional<std::string> home, Then then);
    /// Opens the Mac that the program runs on.
    void openRunning(const RunningMac::Open& running, Then then);
    /// Writes the sample to a new folder of the system's temporary one, and opens it.
    void openSample(Then then);

  private:
    HostServices& host_;
    const Texts& texts_;
    Log& log_;
    Executor& main_;
    Executor& background_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

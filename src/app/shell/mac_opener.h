#pragma once

#include "base/executor.h"
#include "base/log.h"
#include "base/message.h"
#include "base/texts.h"
#include "program/mac.h"
#include "sample/temporary_sample.h"
#include "settings/recent_volumes.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

class HostServices;

/// Opens Macs in the background: what lies on a disk may be slow to answer. Belongs to the main thread.
class MacOpener {
  public:
    struct Opened {
        std::unique_ptr<OwnedMac> mac;
        std::string name;                   ///< of its folder, or what the Mac is called that this runs on
        std::optional<RecentVolume> volume; ///< by which it can be opened again; absent for what is temporary
        std::unique_ptr<TemporarySample> sample = {}; ///< that goes with it
    };
    struct Refusal {
        Message why;
        std::vector<std::string> homes = {}; ///< to choose one from, where only that is missing
    };
    using Result = tl::expected<Opened, Refusal>;
    /// A Mac that is opened by something else than its folder.
    using OpenMac =
        std::function<tl::expected<std::unique_ptr<OwnedMac>, Message>(HostServices&, const Texts&, Log&)>;
    using Then = std::function<void(Result)>; ///< called on the main thread, unless this is gone by then

    /// What is passed outlives this. A disk that does not answer must not keep the next Mac waiting, so
    /// `background` runs each work by itself.
    MacOpener(HostServices& host, const Texts& texts, Log& log, Executor& main, Executor& background)
        : host_(host), texts_(texts), log_(log), main_(main), background_(background) {}

    /// Opens the Mac that the program runs on.
    void openRunning(const OpenMac& running, Then then);
    void open(std::filesystem::path folder, std::optional<std::string> home, Then then);
    /// Writes the sample into a temporary folder, which is removed when the Mac is left, and opens it.
    void openSample(Then then);
    /// The same into a folder that is empty or missing, where it stays.
    void openSample(const std::filesystem::path& folder, Then then);

  private:
    HostServices& host_;
    const Texts& texts_;
    Log& log_;
    Executor& main_;
    Executor& background_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

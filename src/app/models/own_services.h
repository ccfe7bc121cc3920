#pragma once

#include "app/models/user_settings.h"
#include "base/executor.h"
#include "base/log.h"
#include "base/observable.h"
#include "host/curl_fetcher.h"
#include "program/host_services.h"
#include "services/updates_model.h"
#include "settings/write_behind_defaults.h"
#include "system/notification_permission.h"

#include <string>
#include <vector>

namespace tidwen {

/// What was decided when this program was built.
struct ProgramFacts {
    std::string version;
    std::string feedKey;     ///< the vendor's public key for the update feed; may be empty
    std::string feedAddress; ///< may be empty
};

/// What belongs to this program and not to the Mac that is open. Main thread only.
class OwnServices {
  public:
    /// `languages`: those that the user can choose. What is passed by reference outlives this.
    OwnServices(HostServices& host, Log& log, Executor& main, ProgramFacts facts,
                std::vector<std::string> languages);

    const ProgramFacts& facts() const { return facts_; }
    HostServices& host() { return host_; }
    UserSettings& settings() { return settings_; }
    NotificationPermission& notifications() { return notifications_; }
    UpdatesModel& updates() { return updates_; }

  private:
    HostServices& host_;
    ProgramFacts facts_;
    WriteBehindDefaults& storing_;
    UserSettings settings_;
    NotificationPermission notifications_;
    CurlFetcher fetcher_;
    WorkQueue network_;
    UpdatesModel updates_;
    Subscription following_;
};

} // namespace tidwen

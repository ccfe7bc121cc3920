#include "app/models/own_services.h"

#include "base/executor.h"
#include "base/log.h"
#include "program/update_settings.h"

namespace tidwen {

OwnServices::OwnServices(HostServices& host, Log& log, Executor& main, ProgramFacts facts,
                         std::vector<std::string> languages)
    : host_(host),
      facts_(std::move(facts)),
      storing_(host.storeBehind(main)),
      settings_(storing_, main, std::move(languages)),
      notifications_(host.notifications(), main),
      updates_({fetcher_, log, main, network_},
               [this] {
                   return updateSettings(settings_.preferences(), facts_.feedKey, facts_.feedAddress,
                                         facts_.version);
               }),
      following_(storing_.failed.connect([this](const Message& why) { settings_.failure.set(why); })) {}

} // namespace tidwen

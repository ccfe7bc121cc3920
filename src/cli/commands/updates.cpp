#include "cli/command.h"
#include "cli/console.h"
#include "cli/json/services.h"
#include "host/host_system.h"
#include "services/update_check.h"
#include "settings/app_preferences.h"

#include <sstream>

namespace tidwen {

namespace {

constexpr const char* application = "com.corvella.tidwen";

UpdateSettings settings(const Host& host) {
    const AppPreferences preferences(host.defaults);
    const auto& ownFeed = preferences.updateFeed.get();
    return {.isSwitchedOn = preferences.checksForUpdates.get(),
            .address = ownFeed.empty() ? host.feedAddress : ownFeed,
            .publicKey = host.feedKey,
            .application = application,
            .running = VersionNumber::parse(programVersion()).value_or(VersionNumber{}),
            .system = hostSystem()};
}

void print(const UpdateAnswer& answer, const CommandContext& context) {
    auto& console = context.console;
    const auto& release = answer.release;
    if (!release) return console.line(context.text("updates.none %@", {std::string(programVersion())}));
    const auto* headline =
        answer.state == UpdateState::available ? "updates.available %@ %@" : "updates.needsNewerSystem %@ %@";
    const auto day = iso8601(release->date).substr(0, std::string_view("2026-11-14").size());
    console.line(context.text(headline, {release->version, day}), Paint::strong);
    std::istringstream notes(release->notes);
    for (std::string line; std::getline(notes, line);)
        console.line("  " + line);
    console.line(release->url);
}

ExitStatus run(const CommandContext& context, Host& host) {
    if (const auto problem = host.defaults.problem()) return context.refuse(*problem);
    context.console.progress(context.text("updates.progress"));
    const auto answer = UpdateCheck(host.fetcher, host.log, settings(host)).check();
    context.console.endProgress();
    if (!answer) {
        context.refuse(answer.error().message());
        return answer.error().isRefusal() ? ExitStatus::refused : ExitStatus::someFailed;
    }
    if (context.arguments.json)
        context.console.document(json::document(*answer, programVersion()));
    else
        print(*answer, context);
    return ExitStatus::done;
}

} // namespace

Command updatesCommand() {
    return {
        .syntax = {.name = "updates",
                   .summary = "Tell whether there is a newer version, if the setting checksForUpdates is on"},
        .run = run};
}

} // namespace tidwen

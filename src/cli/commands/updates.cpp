#include "base/executor.h"
#include "base/timestamp.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/json/services.h"
#include "program/update_settings.h"
#include "services/update_feed.h"
#include "services/updates_model.h"
#include "settings/app_preferences.h"

#include <sstream>
#include <string>
#include <string_view>

namespace tidwen {

namespace {

void print(const UpdateAnswer& answer, const CommandContext& context) {
    auto& console = context.console;
    const auto& release = answer.release;
    if (!release) return console.line(context.text("updates.none %@", {std::string(programVersion())}));
    const auto* headline =
        answer.state == UpdateState::available ? "updates.available %@ %@" : "updates.needsNewerSystem %@ %@";
    const auto day = iso8601(release->date).substr(0, std::string_view("2026-11-14").size());
    console.line(context.text(headline, {release->version, day}), Style::strong);
    std::istringstream notes(release->notes);
    for (std::string line; std::getline(notes, line);)
        console.line("  " + line);
    console.line(release->url);
}

ExitStatus runUpdates(const CommandContext& context, Host& host) {
    if (const auto problem = host.defaults.problem()) return context.refuse(*problem);
    context.console.progress(context.text("updates.progress"));
    const AppPreferences preferences(host.defaults);
    MainQueue main;
    WorkQueue background;
    UpdatesModel model({host.fetcher, host.log, main, background}, [&] {
        return updateSettings(preferences, host.feedKey, host.feedAddress, programVersion());
    });
    model.check();
    main.runUntil([&] { return !model.isChecking.get(); });
    context.console.endProgress();
    if (const auto& error = model.error.get()) {
        context.refuse(error->message());
        return error->isRefusal() ? ExitStatus::refused : ExitStatus::someFailed;
    }
    const auto& answer = model.answer.get();
    if (context.arguments.json)
        context.console.document(json::document(*answer, programVersion()));
    else
        print(*answer, context);
    return ExitStatus::done;
}

} // namespace

Command updatesCommand() {
    return {.syntax = {.name = "updates", .summary = "cli.help.updates"}, .run = runUpdates};
}

} // namespace tidwen

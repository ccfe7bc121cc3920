#include "base/executor.h"
#include "base/json.h"
#include "cli/command.h"
#include "cli/console.h"
#include "system/trash_catcher.h"

#include <csignal>
#include <nlohmann/json.hpp>

namespace tidwen {

namespace {

volatile std::sig_atomic_t interrupted = 0; // set by a signal handler, which can reach nothing else

void show(const TrashedApp& app, const CommandContext& context) {
    if (context.arguments.json) {
        context.console.document(
            writeJson({{"url", app.url.string()}, {"name", app.name}, {"bundleID", app.bundleID}}));
    } else {
        context.console.line({{context.text("trash.notification.title %@", {app.name}), Paint::strong}});
        context.console.line("  " + context.commandLine("remove '" + app.url.string() + "'"));
    }
    (void)context.console.finish();
}

ExitStatus run(const CommandContext& context, Mac& mac) {
    auto& system = mac.system;
    MainQueue main;
    WorkQueue queue;
    bool isWatching = false;
    {
        TrashWatcher watcher({system.files, mac.folderEvents, system.clock, main, queue, system.log},
                             system.user.trash(), [&](const std::vector<Path>& bundles) {
                                 for (const auto& url : bundles)
                                     if (const auto app = TrashedApp::read(system.files, url)) {
                                         show(*app, context);
                                         (void)mac.notifications.post(trashNotification(*app, system.texts));
                                     }
                             });
        watcher.start();
        isWatching = watcher.isWatching();
        if (isWatching) {
            if (!context.arguments.json)
                context.console.complain(
                    context.text("cli.watch.started %@", {system.user.trash().string()}));
            std::signal(SIGINT, [](int) { interrupted = 1; });
            std::signal(SIGTERM, [](int) { interrupted = 1; });
            while (!interrupted)
                main.runFor(std::chrono::milliseconds(200));
        }
    }
    if (!isWatching) return context.refuse({"cli.watch.impossible %@", {system.user.trash().string()}});
    return ExitStatus::done;
}

} // namespace

Command watchCommand() {
    return {.syntax = {.name = "watch",
                       .summary = "Tell of each application that is moved to the Trash, until interrupted"},
            .run = run};
}

} // namespace tidwen

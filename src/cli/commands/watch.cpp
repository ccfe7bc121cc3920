#include "base/executor.h"
#include "cli/command.h"
#include "cli/commands/numbered_history.h"
#include "cli/commands/requested_applications.h"
#include "cli/console.h"
#include "cli/end_signals.h"
#include "cli/flow_session.h"
#include "cli/json/services.h"
#include "cli/labels.h"
#include "platform/notifications.h"
#include "program/mac.h"
#include "program/session.h"
#include "quarantine/manifest.h"
#include "quarantine/manifest_subject.h"
#include "scan/applications/installed_bundles.h"
#include "settings/app_preferences.h"
#include "system/trash_catcher.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

namespace {

constexpr const char* atLogin = "--at-login";

/// The Trash watch in a terminal. Called by hand it watches regardless of the setting, until that is switched
/// off; started at login it runs only while the setting is on.
class WatchSession {
  public:
    WatchSession(const CommandContext& context, Mac& mac)
        : context_(context),
          mac_(mac),
          session_(mac, main_, InstalledBundles::Looks::once),
          preferences_(session_.preferences()),
          catcher_(session_.models().trashCatcher()) {}

    ExitStatus run() {
        const bool byHand = !context_.arguments.has(atLogin);
        if (!byHand) mac_.system.log.info("Login launch: watching the Trash without a window");
        const auto finding = catcher_.found.connect([this](const TrashedApp& app) { show(app); });
        catcher_.presentMainWindow = [this] { showPendingCleanUp(); };
        catcher_.install();
        if (byHand) catcher_.watchOnce();
        const bool isOn = preferences_.catchTrashedApps.get();
        if (!byHand && !isOn) return ExitStatus::done;
        if (!catcher_.isWatching()) return context_.refuse({"cli.watch.impossible %@", {trash()}});

        note("cli.watch.started %@", {trash()});
        if (!isOn)
            advise("cli.watch.once %@",
                   context_.commandLine({"settings", "set", "catchTrashedApps", "true"}));
        RequestedApplications requested(context_, session_);
        requested.start();
        const auto allowing = catcher_.permission().state.observe([this](auto state) { tellOf(state); });
        askForPermission();
        const auto switching = preferences_.catchTrashedApps.observe(
            [this, byHand](const bool& value) { tellOfSwitch(value, byHand); });
        if (!session_.followSettings())
            mac_.system.log.warning("Changes of the settings are seen at the next start");
        const EndSignals signals(main_, [this] { isEnding_ = true; });
        tidyUp();
        main_.runUntil([this] { return isEnding_; });
        return ExitStatus::done;
    }

  private:
    std::string trash() const { return mac_.system.user.trash().string(); }

    /// Prints a message beside the finds, except with --json.
    void note(std::string_view key, const std::vector<std::string>& fill = {}) const {
        if (!context_.arguments.json) context_.console.error(context_.text(key, fill));
    }

    /// The same with a command to copy.
    void advise(std::string_view key, const std::string& command) const {
        if (!context_.arguments.json) context_.advise({std::string(key)}, command);
    }

    void tidyUp() const {
        FlowSession session(context_, mac_);
        const auto notices = session.start();
        if (const auto& purged = session.purged()) note("%@", {context_.texts.text(*purged)});
        for (const auto& notice : notices) {
            note("home.recovery.title %@", {subjectText(notice.manifest, context_.texts)});
            for (const auto& item : notice.unsettled)
                note("failure.moveUnfinished %@", {item});
            tellOfMissing(notice.manifest);
            if (const auto undo = undoCommandLine(notice.manifest.quarantineRoot, context_, mac_))
                advise(missesItems(notice.manifest) ? "cli.undo.hintRest %@" : "cli.undo.hint %@", *undo);
        }
    }

    void tellOfMissing(const Manifest& run) const {
        if (!missesItems(run)) return;
        note("cli.recover.missing");
        for (const auto& entry : run.entries)
            if (entry.isMissing) note("%@", {"  " + entry.source});
    }

    void askForPermission() {
        auto& permission = catcher_.permission();
        permission.refresh();
        if (permission.state.get() == NotificationState::notAsked) permission.request();
    }

    void tellOf(NotificationState state) const {
        if (state == NotificationState::denied) note("cli.watch.notificationsDenied");
        if (state == NotificationState::unavailable) note("cli.watch.notificationsUnavailable");
    }

    void tellOfSwitch(bool isOn, bool byHand) {
        if (isOn && !catcher_.isWatching()) note("cli.watch.impossible %@", {trash()});
        if (isOn) return note("cli.watch.started %@", {trash()});
        note(byHand ? "cli.watch.switchedOff" : "cli.watch.ended");
        isEnding_ = !byHand;
    }

    void show(const TrashedApp& app) {
        if (context_.arguments.json) {
            context_.console.document(json::line(app));
        } else {
            context_.console.line(
                {{context_.text("trash.notification.title %@", {app.name}), Style::strong}});
            showRemoval(app.url.string());
        }
        isEnding_ = !context_.console.finish() || isEnding_; // the reader closed the pipe
    }

    void showRemoval(const std::string& bundle) const {
        context_.offer(context_.commandLine({"remove", bundle}));
    }

    /// Prints the command for what a window would show.
    void showPendingCleanUp() {
        if (const auto chosen = catcher_.takePendingCleanUp(); chosen && !context_.arguments.json)
            showRemoval(chosen->path);
        isEnding_ = !context_.console.finish() || isEnding_;
    }

    const CommandContext& context_;
    Mac& mac_;
    MainQueue main_;
    Session session_;
    AppPreferences& preferences_;
    TrashCatcher& catcher_;
    bool isEnding_ = false;
};

ExitStatus runWatch(const CommandContext& context, Mac& mac) {
    return WatchSession(context, mac).run();
}

} // namespace

Command watchCommand() {
    return {.syntax = {.name = "watch",
                       .summary = "cli.help.watch",
                       .options = {{atLogin, "", "cli.help.watch.atLogin"}}},
            .run = runWatch};
}

} // namespace tidwen

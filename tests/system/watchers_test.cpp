#include "base/executor.h"
#include "base/path.h"
#include "base/property_list.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "platform/login_item.h"
#include "platform/notifications.h"
#include "settings/app_preferences.h"
#include "system/inbox_watcher.h"
#include "system/request_inbox.h"
#include "system/trash_catcher.h"

#include "support/fixtures.h"
#include "support/folder_events_contract.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"
#include "support/stand_ins.h"
#include "support/watched_files.h"
#include "volume/volume_folder_events.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

class FakeNotifications : public Notifications {
  public:
    NotificationState state() const override { return settled; }
    void requestAuthorization(std::function<void(NotificationState)> answered) override {
        ask = std::move(answered);
    }
    bool post(const UserNotification& notification) override {
        posted.push_back(notification);
        return true;
    }
    void onResponse(Response response) override { respond = std::move(response); }

    NotificationState settled = NotificationState::allowed;
    std::function<void(NotificationState)> ask;
    std::vector<UserNotification> posted;
    Response respond;
};

class FakeLoginItem : public LoginItem {
  public:
    bool isEnabled() const override { return enabled; }
    bool setEnabled(bool on) override {
        enabled = on;
        return true;
    }
    bool startsAnother() const override { return another; }
    bool enabled = false;
    bool another = false;
};

class Catcher : public testing::Test {
  protected:
    void trash(const std::string& name, const std::string& bundleID) {
        test::writeBundle(volume, "/Users/alice/.Trash/" + name + ".app", bundleID, name);
    }
    void fire() {
        events.fire();
        settle();
    }
    void settle() {
        for (int step = 0; step < 6; ++step) { // seen, read, looked at again, and reported
            queue.drain();
            main.drain();
        }
    }
    std::vector<std::string> titles() {
        return eachOf(std::exchange(notifications.posted, {}),
                      [](const UserNotification& each) { return each.userInfo.at("bundleID"); });
    }

    test::TemporaryVolume volume;
    test::MemoryDefaults defaults;
    test::RecordingLog log;
    test::HandFiredEvents events;
    FakeNotifications notifications;
    FakeLoginItem loginItem;
    test::FixedClock clock;
    Texts texts;
    MainQueue main, queue; // both stepped by hand
    AppPreferences preferences{defaults};
    TrashCatcher catcher{{volume.files(), events, notifications, loginItem, texts, clock, main, queue, log},
                         preferences,
                         Path("/Users/alice/.Trash")};
};

TEST_F(Catcher, TellsOfEachNewApplicationOnce) {
    trash("Old", "com.example.old");
    clock.time = Timestamp(std::chrono::hours(24 * 365 * 100)); // that came before
    catcher.install();
    EXPECT_FALSE(catcher.isWatching());
    preferences.catchTrashedApps.set(true);
    EXPECT_TRUE(catcher.isWatching());
    EXPECT_FALSE(loginItem.enabled) << "not on the main thread";
    settle();
    EXPECT_TRUE(loginItem.enabled);

    trash("A", "com.example.a");
    trash("B", "com.example.b");
    trash("Apple", "com.APPLE.thing");
    trash("Own", "com.corvella.tidwen");
    volume.link("/Users/alice/.Trash/Link.app", "/Users/alice/.Trash/Old.app");
    volume.makeFolder("/Users/alice/.Trash/Empty.app");
    fire();
    EXPECT_THAT(titles(), ElementsAre("com.example.a", "com.example.b"));
    fire();
    EXPECT_THAT(titles(), IsEmpty());
    trash("Empty", "com.example.copied"); // the rest of it arrives
    for (int i = 0; i < 2; ++i)
        events.fireInBundle();
    settle();
    EXPECT_THAT(titles(), ElementsAre("com.example.copied")) << "reported once";

    std::filesystem::remove_all(
        volume.host("/Users/alice/.Trash/A.app")); // put back, and moved to the Trash again
    fire();
    trash("A", "com.example.a");
    fire();
    EXPECT_THAT(titles(), ElementsAre("com.example.a"));

    trash("C", "com.example.c");
    events.fire();
    queue.drain();
    preferences.catchTrashedApps.set(false); // while the result is queued
    main.drain();
    settle();
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_FALSE(loginItem.enabled);
}

TEST_F(Catcher, TellsOfABundleThatIsFinishedInTheMiddleOfALook) {
    test::WatchedFiles files{volume.files()};
    TrashCatcher watching{{files, events, notifications, loginItem, texts, clock, main, queue, log},
                          preferences,
                          Path("/Users/alice/.Trash")};
    volume.makeFolder("/Users/alice/.Trash");
    watching.watchOnce();
    settle();
    for (std::size_t call = 0;; ++call) {
        const auto name = "App" + std::to_string(call);
        volume.makeFolder("/Users/alice/.Trash/" + name + ".app");
        files.before(call, [&] {
            trash(name, "com.example." + name);
            if (events.fireInBundle) events.fireInBundle();
        });
        fire();
        if (files.calls() <= call) break; // the look had already finished
        EXPECT_THAT(titles(), ElementsAre("com.example." + name)) << "finished before call " << call;
    }
}

TEST_F(Catcher, WatchesOnRequestUntilThePreferenceChanges) {
    loginItem.enabled = true; // left from when the preference was on
    catcher.install();
    catcher.watchOnce();
    settle();
    EXPECT_FALSE(loginItem.enabled) << "does not affect the next login";
    trash("A", "com.example.a");
    fire();
    EXPECT_THAT(titles(), ElementsAre("com.example.a"));
    for (const bool isOn : {true, false}) { // as if another process changed it
        defaults.values["tidwen.catchTrashedApps"] = PropertyListValue(isOn);
        preferences.reload();
        settle();
        EXPECT_EQ(catcher.isWatching(), isOn);
        EXPECT_EQ(loginItem.enabled, isOn);
    }
}

TEST_F(Catcher, PostsNothingWithoutPermissionAndHandsTheAnswerOver) {
    notifications.settled = NotificationState::notAsked;
    preferences.catchTrashedApps.set(true);
    catcher.install();
    settle();
    trash("A", "com.example.a");
    fire();
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_TRUE(log.contains("notifications not allowed"));

    catcher.permission().request();
    EXPECT_EQ(catcher.permission().state.get(), NotificationState::asking);
    notifications.ask(NotificationState::allowed);
    main.drain();
    EXPECT_EQ(catcher.permission().state.get(), NotificationState::allowed);
    catcher.permission().refresh();
    EXPECT_EQ(catcher.permission().state.get(), NotificationState::allowed) << "the service answers later";

    int presented = 0;
    catcher.presentMainWindow = [&] { ++presented; };
    notifications.respond("dismissed", {{"path", "/x"}});
    notifications.respond(cleanUpAction, {{"bundleID", "com.example.a"}});
    notifications.respond(cleanUpAction, {{"path", "/Users/alice/.Trash/A.app"}});
    main.drain();
    EXPECT_EQ(presented, 1);
    EXPECT_EQ(catcher.takePendingCleanUp()->path, "/Users/alice/.Trash/A.app");
    EXPECT_FALSE(catcher.takePendingCleanUp().has_value());
}

TEST_F(Catcher, FallsBackToDatesWhenTheTrashCouldNotBeListed) {
    clock.time = Timestamp(std::chrono::seconds(1)); // everything arrived after that
    preferences.catchTrashedApps.set(true);
    catcher.install(); // the Trash does not exist yet
    trash("A", "com.example.a");
    fire();
    EXPECT_THAT(titles(), ElementsAre("com.example.a"));
}

class WatchedInbox : public testing::Test {
  protected:
    WatchedInbox() {
        for (const auto* app : {"/A.app", "/B.app", "/C.app"})
            volume.makeFolder(app);
    }
    void start() {
        watcher->start();
        queues.settle();
    }
    void fire() {
        events.fire();
        queues.settle();
    }

    test::TemporaryVolume volume;
    test::RecordingLog log;
    test::HandFiredEvents events;
    test::SteppedQueues queues;
    RequestInbox inbox{volume.files(), RequestInbox::fallbackContainer(test::alice()), log};
    std::vector<std::string> served;
    std::optional<InboxWatcher> watcher{
        std::in_place, InboxWatcher::Ports{volume.files(), events, queues.main, queues.background, log},
        inbox, [this](const RequestInbox::Drained& requests) {
            for (const auto& path : requests.paths)
                served.push_back(path.string());
            for (const auto& path : requests.refused)
                served.push_back("not " + path);
        }};
};

TEST_F(WatchedInbox, ServesWhatWaitsAndWhatComes) {
    inbox.post({{"/A.app"}}, "1");
    start();
    inbox.post({{"/B.app", "/None.app"}}, "2");
    fire();
    fire();
    EXPECT_THAT(served, ElementsAre("/A.app", "/B.app", "not /None.app"));

    for (std::size_t i = 0; i <= RequestInbox::maxRequestsPerDrain; ++i)
        inbox.post({{"/A.app"}}, std::to_string(i));
    fire();
    EXPECT_EQ(served.size(), 5u) << "one event, two drains";
    EXPECT_EQ(inbox.waiting(), 0u);

    inbox.post({{"/C.app"}}, "3");
    events.fire();
    watcher.reset(); // while the request is queued
    queues.settle();
    EXPECT_EQ(served.size(), 5u);
    EXPECT_EQ(inbox.waiting(), 1u);
}

TEST_F(WatchedInbox, LeavesRequestsWhereTheyAreWhileNobodyCanBeServed) {
    start();
    inbox.post({{"/A.app"}}, "1");
    events.fire();
    queues.main.drain();
    queues.background.drain(); // taken from the folder first
    watcher->setBusy(true);
    inbox.post({{"/B.app"}}, "2");
    fire();
    EXPECT_THAT(served, IsEmpty());
    EXPECT_EQ(watcher->waiting.get(), 2u);
    EXPECT_EQ(inbox.waiting(), 1u) << "it stays when the program ends";
    watcher->setBusy(false);
    queues.settle();
    EXPECT_THAT(served, ElementsAre("/A.app", "/B.app"));
    EXPECT_EQ(watcher->waiting.get(), 0u);
}

TEST_F(WatchedInbox, FollowsAFolderThatWasReplaced) {
    start();
    const auto folder = volume.host(inbox.folder()->string());
    std::filesystem::rename(folder, volume.host("/aside"));
    inbox.post({{"/A.app"}}, "1");
    fire();
    EXPECT_EQ(events.watched.size(), 2u);
    EXPECT_THAT(served, ElementsAre("/A.app"));
    std::filesystem::remove(folder);
    fire();
    EXPECT_EQ(events.watched.size(), 3u);
    EXPECT_TRUE(std::filesystem::is_directory(folder));
}

TEST_F(WatchedInbox, WithoutEventsServesWhatWaits) {
    inbox.post({{"/A.app"}}, "1");
    events.isImpossible = true;
    start();
    EXPECT_FALSE(watcher->isWatching());
    EXPECT_TRUE(log.contains("Could not watch for requests"));
    EXPECT_THAT(served, ElementsAre("/A.app"));
}

TEST(VolumeFolderEvents, FollowTheFolderAwayAndBack) {
    const test::TemporaryVolume volume;
    VolumeFolderEvents events(volume.hostRoot());
    if (!events.watch(Path("/"), [] {})) GTEST_SKIP() << "this machine watches no folders so";
    test::expectToFollowAFolder(volume, events);
}

} // namespace
} // namespace tidwen

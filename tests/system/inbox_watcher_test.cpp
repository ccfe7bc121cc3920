#include "system/inbox_watcher.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"

#include <filesystem>

namespace tidwen::test {
namespace {

class WatchedInbox : public testing::Test {
  protected:
    WatchedInbox() {
        for (const auto* app : {"/A.app", "/B.app", "/C.app"})
            volume.makeFolder(app);
    }
    void fire() {
        events.fire();
        main.drain();
    }

    TemporaryVolume volume;
    RecordingLog log;
    HandFiredEvents events;
    MainQueue main;
    RequestInbox inbox{volume.files(), RequestInbox::fallbackContainer(alice()), log};
    std::vector<std::string> served;
    std::optional<InboxWatcher> watcher{std::in_place, InboxWatcher::Ports{volume.files(), events, main, log},
                                        inbox, [this](const std::vector<Path>& paths) {
                                            for (const auto& path : paths)
                                                served.push_back(path.string());
                                        }};
};

TEST_F(WatchedInbox, ServesWhatWaitsAndWhatComes) {
    inbox.post({{"/A.app"}}, "1");
    watcher->start();
    inbox.post({{"/B.app"}}, "2");
    fire();
    fire();
    EXPECT_THAT(served, ElementsAre("/A.app", "/B.app"));

    inbox.post({{"/C.app"}}, "3");
    events.fire();
    watcher.reset(); // while the request is on its way
    main.drain();
    EXPECT_EQ(served.size(), 2u);
}

TEST_F(WatchedInbox, FollowsAFolderThatWasReplaced) {
    watcher->start();
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
    watcher->start();
    EXPECT_FALSE(watcher->isWatching());
    EXPECT_TRUE(log.contains("Could not watch for requests"));
    EXPECT_THAT(served, ElementsAre("/A.app"));
}

} // namespace
} // namespace tidwen::test

#include "base/executor.h"
#include "base/path.h"
#include "base/texts.h"
#include "program/host_services.h"
#include "program/session.h"
#include "program/session_models.h"
#include "program/volume_mac.h"
#include "scan/applications/installed_bundles.h"
#include "support/fixtures.h"
#include "system/request_inbox.h"

#include <gtest/gtest.h>
#include <optional>
#include <string_view>

namespace tidwen {
namespace {

TEST(SessionModels, ARequestWaitsInItsFolderWhileTheRemovalTakesNothingIn) {
    const test::TemporaryVolume volume;
    volume.makeFolder("/Users/alice/Library");
    test::writeBundle(volume, "/Applications/Alpine.app", "com.example.alpine", "Alpine");
    test::RecordingLog log;
    HostServices host({"/usr/bin/true"}, log);
    const Texts texts;
    const auto opened = VolumeMac::open(volume.hostRoot(), std::nullopt, host, texts, log);
    ASSERT_TRUE(opened);
    MainQueue main;
    Session session((*opened)->mac(), main, InstalledBundles::Looks::once);
    auto& flow = session.models().removal();
    const auto isIn = [&](std::string_view stage) { return name(flow.stage()) == stage; };

    const OwnBundle bundle;
    auto inbox = requestInbox(session.mac(), bundle);
    const auto watcher = session.models().inboxWatcher(
        bundle, [&](const RequestInbox::Drained& request) { flow.loadTargets(request.paths); });
    watcher->start();
    flow.scanOrphans();
    main.runUntil([&] { return isIn("orphans"); });
    ASSERT_TRUE(inbox.post({{"/Applications/Alpine.app"}}, "1"));
    watcher->look();
    main.runUntil([&] { return watcher->waiting.get() == 1; });
    EXPECT_TRUE(isIn("orphans"));
    EXPECT_EQ(inbox.waiting(), 1u);

    flow.close();
    main.runUntil([&] { return isIn("review"); });
    EXPECT_EQ(flow.choice().findings().scanned().front().target.name, "Alpine");
    EXPECT_EQ(inbox.waiting(), 0u);

    // The flow is free, and still nothing is taken.
    session.models().history().undo(Path("/Users/alice/.Trash/Tidwen - none"));
    EXPECT_FALSE(session.models().takesRequests().get());
    ASSERT_TRUE(inbox.post({{"/Applications/Alpine.app"}}, "2"));
    watcher->look();
    main.runUntil([&] { return session.models().takesRequests().get(); });
    EXPECT_TRUE(isIn("review"));
    main.runUntil([&] { return isIn("scanning"); });
}

} // namespace
} // namespace tidwen

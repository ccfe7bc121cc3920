#include "base/message.h"
#include "base/path.h"
#include "base/property_list.h"
#include "operations/screened_move.h"
#include "quarantine/manifest.h"
#include "quarantine/trash_lock.h"
#include "removal/flow_fixture.h"
#include "removal/flow_types.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <variant>

namespace tidwen::test {
namespace {

TEST(RemovalFlow, NothingIsRemovedWhileWhatIsProtectedIsUnknown) {
    const std::pair<std::string, std::function<void(FlowFixture&)>> cases[] = {
        {"unreadable", [](FlowFixture& fixture) { fixture.defaults.fault = Message{"unreadable"}; }},
        {"settings.problem.protectedList", [](FlowFixture& fixture) {
             fixture.defaults.values[ProtectedApps::defaultsKey] = "com.example.Alpine";
         }}};
    for (const auto& [reason, damage] : cases) {
        FlowFixture fixture;
        damage(fixture);
        fixture.remove({"Alpine"});
        EXPECT_EQ(fixture.stage(), "review") << "looking is harmless";
        EXPECT_THAT(fixture.selected(), IsEmpty()) << "it may be one of these";
        EXPECT_EQ(fixture.model->errorMessage(), reason);
        EXPECT_TRUE(fixture.has(fixture.bundle("Alpine")));
        EXPECT_FALSE(fixture.protectedApps.toggle("com.example.Birch") && reason != "unreadable");
    }
}

TEST(RemovalFlow, ARunThatCannotBeginAsksNobodyToQuit) {
    FlowFixture fixture;
    fixture.running.obedient = {"com.example.Alpine"};
    {
        const auto other = lockTrash(fixture.user, fixture.volume.files());
        fixture.remove({"Alpine"});
        EXPECT_EQ(fixture.model->errorMessage(), "failure.trashBusy");
    }
    EXPECT_EQ(fixture.stage(), "review");
    EXPECT_THAT(fixture.running.asked, IsEmpty());
    fixture.model->confirm();
    fixture.settle();
    EXPECT_EQ(fixture.stage(), "report") << "the selection is still there";
}

TEST(RemovalFlow, RefusalsAreLinesAndDoNotKeepTheOthersOut) {
    FlowFixture fixture;
    fixture.protectedApps.toggle("com.example.Birch");
    fixture.volume.write("/Applications/Ev\nil.app", "a file");
    fixture.model->loadTargets({Path("/Applications/Ev\nil.app"), fixture.bundle("Birch"),
                                fixture.bundle("Alpine"), Path("/Applications/./Alpine.app")});
    fixture.settle();
    EXPECT_EQ(fixture.model->errorMessage(), "Ev\\nil.app: error.unreadableBundle\nerror.protectedApp Birch");
    EXPECT_EQ(fixture.model->choice().findings().groups().size(), 1u);

    fixture.model->loadTargets({fixture.bundle("Birch")});
    fixture.settle();
    EXPECT_EQ(fixture.model->errorMessage(), "error.protectedApp Birch");
    EXPECT_EQ(fixture.stage(), "review") << "what was found before is still there";
    EXPECT_THAT(fixture.selected(), Contains(fixture.bundle("Alpine").string()));
}

TEST(RemovalFlow, AnApplicationAndItsDataGoTogetherOrNotAtAll) {
    FlowFixture fixture;
    const Path got("/Users/alice/Downloads/Alpine.app"), linked("/Applications/Linked.app");
    writeBundle(fixture.volume, got.string(), "com.example.Alpine", "Alpine");
    fixture.volume.link(linked.string(), "/opt/apps/Cedar.app");
    writeBundle(fixture.volume, "/opt/apps/Cedar.app", "com.example.Cedar", "Cedar");
    for (const auto& [app, reason] :
         {std::pair(got, "error.protectedPlace Alpine " + got.string()),
          std::pair(linked, std::string("error.reachedThroughLink Cedar /opt/apps/Cedar.app"))}) {
        fixture.model->loadTargets({app});
        fixture.settle();
        EXPECT_THAT(fixture.selected(), IsEmpty());
        ASSERT_TRUE(fixture.model->refusal());
        fixture.model->confirm();
        fixture.settle();
        EXPECT_EQ(fixture.stage(), "review");
        EXPECT_EQ(fixture.model->errorMessage(), reason);
        EXPECT_TRUE(fixture.has(fixture.cache("Alpine")) && fixture.has(fixture.cache("Cedar")));
        EXPECT_THAT(fixture.running.asked, IsEmpty());
        fixture.model->close();
    }
    fixture.model->loadTargets({got});
    fixture.settle();
    for (const auto& group : fixture.model->choice().findings().groups())
        for (const auto& trace : group.traces)
            if (trace.category != TraceCategory::application) fixture.model->setSelected({trace.id}, true);
    EXPECT_EQ(fixture.model->choice().subject().text(fixture.texts),
              "report.subject.of report.subject.items 1 Alpine")
        << "no permission is recorded, so that its reset is no item";
    fixture.model->confirm();
    fixture.settle();
    EXPECT_EQ(fixture.stage(), "report") << "data alone is an explicit choice";
    EXPECT_TRUE(fixture.has(got) && !fixture.has(fixture.cache("Alpine")));
}

TEST(RemovalFlow, NamesWhatTheRightsDoNotSufficeFor) {
    FlowFixture fixture;
    giveToUnprivileged(fixture.volume.hostRoot());
    std::filesystem::permissions(fixture.volume.host("/Applications"), std::filesystem::perms(0555));
    asUnprivileged([&] {
        fixture.remove({"Alpine"});
        EXPECT_EQ(fixture.stage(), "review");
        EXPECT_THAT(fixture.model->unmovableItems(), ElementsAre(fixture.bundle("Alpine")));
        EXPECT_TRUE(fixture.has(fixture.cache("Alpine")));
    });
}

TEST(RemovalFlow, LooksAgainAtEachApplicationBeforeItsFirstStep) {
    const std::pair<const char*, std::function<void(FlowFixture&)>> changes[] = {
        {"failure.applicationChanged %@",
         [](FlowFixture& b) { writeBundle(b.volume, b.bundle("Birch").string(), "com.other", "Other"); }},
        {"failure.applicationChanged %@",
         [](FlowFixture& b) {
             std::filesystem::rename(b.volume.host(b.bundle("Birch").string()), b.volume.host("/Old.app"));
             writeBundle(b.volume, b.bundle("Birch").string(), "com.example.Birch", "Birch");
         }},
        {"failure.applicationChanged %@",
         [](FlowFixture& b) {
             std::filesystem::rename(b.volume.host(b.bundle("Birch").string()), b.volume.host("/Old.app"));
         }},
        {"error.protectedApp %@", [](FlowFixture& b) { b.protectedApps.toggle("com.example.Birch"); }},
    };
    for (const auto& [reason, change] : changes) {
        SCOPED_TRACE(reason);
        FlowFixture fixture;
        fixture.running.stubborn = {"com.example.Birch"};
        fixture.remove({"Birch", "Alpine"});
        ASSERT_TRUE(fixture.model->pendingQuitPrompt());
        change(fixture);
        fixture.model->answerQuitPrompt(QuitPromptChoice::forceContinue);
        fixture.settle();
        ASSERT_EQ(fixture.stage(), "report");
        const auto& report = std::get<stage::Report>(fixture.model->stage()).report;
        EXPECT_TRUE(fixture.has(fixture.cache("Birch"))) << "nor is its data taken";
        for (const auto& failure : report.failures())
            EXPECT_EQ(failure.reason.key, reason);
        EXPECT_FALSE(fixture.has(fixture.bundle("Alpine")) || fixture.has(fixture.cache("Alpine")));
        EXPECT_EQ(report.failures().size(), 3u) << "its permissions, cache and bundle";
        EXPECT_THAT(eachOf(report.apps, &AppRecord::name), ElementsAre("Alpine"));
    }
}

TEST(RemovalFlow, LeavesWhatHasBecomeAnothersSinceItWasConfirmed) {
    const Path longer("/Users/alice/Library/Caches/com.example.Alpine.pro"),
        job("/Users/alice/Library/LaunchAgents/a.plist");
    const auto writeJob = [&](FlowFixture& b, const char* label) {
        b.volume.write(job.string(), writeXmlPropertyList(PropertyListDictionary{{"Label", label}}));
    };
    const struct {
        const char* reason;
        Path item;
        std::function<void(FlowFixture&)> change;
    } cases[] = {
        {"failure.claimedSince %@ %@", longer,
         [](FlowFixture& b) {
             writeBundle(b.volume, "/Applications/Alpine Pro.app", "com.example.Alpine.pro", "Alpine Pro");
         }},
        {"failure.claimedSince %@ %@", longer,
         [&](FlowFixture& b) { writeBundle(b.volume, (longer / "Kip.app").string(), "org.kip.kip", "Kip"); }},
        {changedSinceKey, job, [&](FlowFixture& b) { writeJob(b, "org.other.job"); }},
    };
    for (const auto& [reason, item, change] : cases) {
        SCOPED_TRACE(reason);
        FlowFixture fixture;
        fixture.seesOthers = true;
        fixture.volume.write((longer / "data").string(), "x");
        writeJob(fixture, "com.example.Alpine.job");
        fixture.running.stubborn = {"com.example.Alpine"};
        fixture.remove({"Alpine"});
        ASSERT_TRUE(fixture.model->pendingQuitPrompt());
        EXPECT_TRUE(fixture.selected().contains(item.string()));
        change(fixture);
        fixture.model->answerQuitPrompt(QuitPromptChoice::forceContinue);
        fixture.settle();
        ASSERT_EQ(fixture.stage(), "report");
        EXPECT_TRUE(fixture.has(item));
        EXPECT_FALSE(fixture.has(fixture.cache("Alpine"))) << "which is still its own";
        for (const auto& failure : std::get<stage::Report>(fixture.model->stage()).report.failures())
            EXPECT_EQ(failure.reason.key, reason);
    }
}

TEST(RemovalFlow, SelectsNothingThatAProtectedIdentifierClaims) {
    FlowFixture fixture;
    fixture.volume.write(fixture.cache("Alpine.pro").string() + "/data", "x");
    fixture.volume.write(fixture.cache("Alpine").string() + ".x/data", "x");
    fixture.protectedApps.set({"com.example.alpine.PRO", "com.example"}, true);
    fixture.review({"Alpine"});
    EXPECT_TRUE(fixture.selected().contains(fixture.cache("Alpine").string() + ".x"));
    EXPECT_FALSE(fixture.selected().contains(fixture.cache("Alpine.pro").string()));
}

TEST(RemovalFlow, TakesOnlyWhatIsStillWhatWasFound) {
    const std::pair<const char*, std::function<void(FlowFixture&, const Path&)>> changes[] = {
        {"", [](FlowFixture& b, const Path& item) { b.volume.write(item.string(), "saved again"); }},
        {changedSinceKey,
         [](FlowFixture& b, const Path& item) {
             std::filesystem::remove(b.volume.host(item.string()));
             b.volume.write((item / "thesis").string(), "x");
         }},
        {changedSinceKey,
         [](FlowFixture& b, const Path& item) {
             std::filesystem::remove(b.volume.host(item.string()));
             b.volume.link(item.string(), "/Users/alice/Documents");
         }},
        {"failure.claimedSince %@ %@",
         [](FlowFixture& b, const Path&) {
             b.reclaimed.emplace(b.orphan.id, Message{"failure.claimedSince %@ %@", {"com.b", "/B.app"}});
         }},
    };
    for (const auto& [reason, change] : changes) {
        FlowFixture fixture;
        const Path item(fixture.orphan.displayName);
        fixture.orphan.found = foundItem(*fixture.volume.files().info(item), TraceCategory::caches);
        fixture.model->scanOrphans();
        fixture.settle();
        fixture.model->select({fixture.orphan.id});
        change(fixture, item);
        fixture.model->confirm();
        fixture.settle();
        ASSERT_EQ(fixture.stage(), "report");
        const auto& report = std::get<stage::Report>(fixture.model->stage()).report;
        const auto failures = report.failures();
        EXPECT_EQ(failures.empty() ? "" : failures.front().reason.key, reason);
        EXPECT_EQ(fixture.has(item), *reason != 0);
        EXPECT_EQ(report.quarantineRoot.isRoot(), *reason != 0) << "a run that took nothing is no run";
    }
}

} // namespace
} // namespace tidwen::test

#include "removal/flow_fixture.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

namespace tidwen::test {
namespace {

TEST(RemovalFlow, NothingIsRemovedWhileWhatIsProtectedIsUnknown) {
    const std::pair<std::string, std::function<void(FlowFixture&)>> cases[] = {
        {"unreadable", [](FlowFixture& bench) { bench.defaults.fault = Message{"unreadable"}; }},
        {"settings.problem.protectedList", [](FlowFixture& bench) {
             bench.defaults.values[ProtectedApps::defaultsKey] = "com.example.Alpine";
         }}};
    for (const auto& [reason, damage] : cases) {
        FlowFixture bench;
        damage(bench);
        bench.remove({"Alpine"});
        EXPECT_EQ(bench.stage(), "review") << "looking is harmless";
        EXPECT_THAT(bench.selected(), IsEmpty()) << "it may be one of these";
        EXPECT_EQ(bench.model->errorMessage(), reason);
        EXPECT_TRUE(bench.has(bench.bundle("Alpine")));
        EXPECT_FALSE(bench.protectedApps.toggle("com.example.Birch") && reason != "unreadable");
    }
}

TEST(RemovalFlow, ARunThatCannotBeginAsksNobodyToQuit) {
    FlowFixture bench;
    bench.running.obedient = {"com.example.Alpine"};
    {
        const auto other = lockTrash(bench.user, bench.volume.files());
        bench.remove({"Alpine"});
        EXPECT_EQ(bench.model->errorMessage(), "failure.trashBusy");
    }
    EXPECT_EQ(bench.stage(), "review");
    EXPECT_THAT(bench.running.asked, IsEmpty());
    bench.model->confirm();
    bench.settle();
    EXPECT_EQ(bench.stage(), "report") << "the selection is still there";
}

TEST(RemovalFlow, RefusalsAreLinesAndDoNotKeepTheOthersOut) {
    FlowFixture bench;
    bench.protectedApps.toggle("com.example.Birch");
    bench.volume.write("/Applications/Ev\nil.app", "a file");
    bench.model->loadTargets({Path("/Applications/Ev\nil.app"), bench.bundle("Birch"), bench.bundle("Alpine"),
                              Path("/Applications/./Alpine.app")});
    EXPECT_EQ(bench.model->errorMessage(), "Ev\\nil.app: error.unreadableBundle\nerror.protectedApp Birch");
    bench.settle();
    EXPECT_EQ(bench.model->choice().findings().groups().size(), 1u);
}

TEST(RemovalFlow, AnApplicationAndItsDataGoTogetherOrNotAtAll) {
    FlowFixture bench;
    const Path got("/Users/alice/Downloads/Alpine.app"), linked("/Applications/Linked.app");
    writeBundle(bench.volume, got.string(), "com.example.Alpine", "Alpine");
    bench.volume.link(linked.string(), "/opt/apps/Cedar.app");
    writeBundle(bench.volume, "/opt/apps/Cedar.app", "com.example.Cedar", "Cedar");
    for (const auto& [app, reason] :
         {std::pair(got, "error.protectedPlace Alpine " + got.string()),
          std::pair(linked, std::string("error.reachedThroughLink Cedar /opt/apps/Cedar.app"))}) {
        bench.model->loadTargets({app});
        bench.settle();
        EXPECT_THAT(bench.selected(), IsEmpty());
        ASSERT_TRUE(bench.model->refusal());
        bench.model->confirm();
        bench.settle();
        EXPECT_EQ(bench.stage(), "review");
        EXPECT_EQ(bench.model->errorMessage(), reason);
        EXPECT_TRUE(bench.has(bench.cache("Alpine")) && bench.has(bench.cache("Cedar")));
        EXPECT_THAT(bench.running.asked, IsEmpty());
        bench.model->close();
    }
    bench.model->loadTargets({got});
    bench.settle();
    for (const auto& group : bench.model->choice().findings().groups())
        for (const auto& trace : group.traces)
            if (trace.category != TraceCategory::application) bench.model->setSelected({trace.id}, true);
    EXPECT_EQ(bench.model->choice().subject().text(bench.texts),
              "report.subject.of report.subject.items 2 Alpine");
    bench.model->confirm();
    bench.settle();
    EXPECT_EQ(bench.stage(), "report") << "data alone is an explicit choice";
    EXPECT_TRUE(bench.has(got) && !bench.has(bench.cache("Alpine")));
}

TEST(RemovalFlow, NamesWhatTheRightsDoNotSufficeFor) {
    FlowFixture bench;
    giveToUnprivileged(bench.volume.hostRoot());
    std::filesystem::permissions(bench.volume.host("/Applications"), std::filesystem::perms(0555));
    asUnprivileged([&] {
        bench.remove({"Alpine"});
        EXPECT_EQ(bench.stage(), "review");
        EXPECT_THAT(bench.model->unmovableItems(), ElementsAre(bench.bundle("Alpine")));
        EXPECT_TRUE(bench.has(bench.cache("Alpine")));
    });
}

} // namespace
} // namespace tidwen::test

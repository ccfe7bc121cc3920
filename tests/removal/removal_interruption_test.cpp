#include "removal/flow_fixture.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

namespace tidwen::test {
namespace {

TEST(RemovalFlow, AsksAboutEachApplicationThatDoesNotQuit) {
    FlowFixture bench;
    bench.running.obedient = {"com.example.Alpine"};
    bench.running.stubborn = {"com.example.Birch", "com.example.Cedar"};
    bench.remove({"Alpine", "Birch", "Cedar"});
    ASSERT_TRUE(bench.model->pendingQuitPrompt());
    const auto first = *bench.model->pendingQuitPrompt();
    EXPECT_EQ(first.appName, "Birch");
    EXPECT_TRUE(bench.has(bench.bundle("Alpine"))) << "nothing moves before every answer is in";
    EXPECT_EQ(lockTrash(bench.user, bench.volume.files()).error().fault, FileFault::busy);

    bench.model->answerQuitPrompt(QuitPromptChoice::forceContinue);
    bench.settle();
    ASSERT_TRUE(bench.model->pendingQuitPrompt());
    EXPECT_EQ(bench.model->pendingQuitPrompt()->appName, "Cedar");
    EXPECT_NE(bench.model->pendingQuitPrompt()->id, first.id);
    bench.model->answerQuitPrompt(QuitPromptChoice::cancelApp);
    bench.settle();

    ASSERT_EQ(bench.stage(), "report");
    EXPECT_EQ(std::get<stage::Report>(bench.model->stage()).report.apps.size(), 2u);
    EXPECT_EQ(std::get<stage::Report>(bench.model->stage()).subject.text(bench.texts),
              "report.subject.apps 2")
        << "who was left out does not count";
    EXPECT_FALSE(bench.has(bench.bundle("Birch")));
    EXPECT_TRUE(bench.has(bench.bundle("Cedar")));

    bench.model->close();
    bench.remove({"Cedar"});
    bench.model->answerQuitPrompt(QuitPromptChoice::cancelApp);
    bench.settle();
    EXPECT_EQ(bench.stage(), "review") << "nobody is left to remove";
    EXPECT_FALSE(bench.model->errorMessage());
    EXPECT_TRUE(lockTrash(bench.user, bench.volume.files()));
}

TEST(RemovalFlow, StopsBeforeTheFirstStepWithoutATrace) {
    for (const int rounds : {0, 1, 2, 3}) { // of the refusals, the quit question, the run
        SCOPED_TRACE(rounds);
        FlowFixture bench;
        bench.review({"Alpine"});
        bench.model->confirm();
        for (int i = 0; i < rounds; ++i) {
            bench.background.drain();
            bench.main.drain();
        }
        bench.model->stop();
        bench.settle();
        const bool isTooLate = rounds == 3;
        EXPECT_EQ(bench.stage(), isTooLate ? "report" : "review");
        EXPECT_EQ(bench.has(bench.bundle("Alpine")), !isTooLate);
        EXPECT_EQ(listQuarantineFolders(bench.user, bench.volume.files())->empty(), !isTooLate);
        EXPECT_EQ(bench.model->errorMessage().has_value(), !isTooLate);
        EXPECT_TRUE(lockTrash(bench.user, bench.volume.files()));
        if (isTooLate) continue;
        bench.running.stubborn = {"com.example.Alpine"};
        bench.model->confirm();
        bench.settle();
        ASSERT_TRUE(bench.model->pendingQuitPrompt());
        bench.model->stop();
        EXPECT_FALSE(bench.model->pendingQuitPrompt());
        EXPECT_EQ(bench.stage(), "review") << "and the choice is still there";
        EXPECT_THAT(bench.selected(), Contains(bench.bundle("Alpine").string()));
    }
}

TEST(RemovalFlow, TellsTheStepAtHand) {
    FlowFixture bench;
    std::vector<std::string> kinds;
    const auto told = bench.model->progress.observe([&](const auto& at) {
        kinds.push_back(at ? at->kind : "none");
        EXPECT_TRUE(!at || at->step == at->total) << "of many steps at once the newest is told";
    });
    bench.review({"Alpine"});
    bench.model->confirm();
    bench.settle();
    bench.model->undoLast();
    bench.settle();
    EXPECT_THAT(kinds, ElementsAre("permissions", "none", "finish", "none", "finish", "none"));
}

} // namespace
} // namespace tidwen::test

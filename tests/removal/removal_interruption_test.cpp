#include "platform/file_system.h"
#include "quarantine/quarantine_layout.h"
#include "quarantine/trash_lock.h"
#include "removal/flow_fixture.h"
#include "removal/flow_types.h"

#include "support/matchers.h"
#include "support/unprivileged.h"

#include <string>
#include <vector>

namespace tidwen::test {
namespace {

TEST(RemovalFlow, AsksAboutEachApplicationThatDoesNotQuit) {
    FlowFixture fixture;
    fixture.running.obedient = {"com.example.Alpine"};
    fixture.running.stubborn = {"com.example.Birch", "com.example.Cedar"};
    fixture.remove({"Alpine", "Birch", "Cedar"});
    ASSERT_TRUE(fixture.model->pendingQuitPrompt());
    const auto first = *fixture.model->pendingQuitPrompt();
    EXPECT_EQ(first.appName, "Birch");
    EXPECT_TRUE(fixture.has(fixture.bundle("Alpine"))) << "nothing moves before every answer is in";
    EXPECT_EQ(lockTrash(fixture.user, fixture.volume.files()).error().key, "failure.trashBusy");

    fixture.model->answerQuitPrompt(QuitPromptChoice::forceContinue);
    fixture.settle();
    ASSERT_TRUE(fixture.model->pendingQuitPrompt());
    EXPECT_EQ(fixture.model->pendingQuitPrompt()->appName, "Cedar");
    EXPECT_NE(fixture.model->pendingQuitPrompt()->id, first.id);
    fixture.model->answerQuitPrompt(QuitPromptChoice::cancelApp);
    fixture.settle();

    ASSERT_EQ(fixture.stage(), "report");
    EXPECT_EQ(std::get<stage::Report>(fixture.model->stage()).report.apps.size(), 2u);
    EXPECT_EQ(std::get<stage::Report>(fixture.model->stage()).subject.text(fixture.texts),
              "report.subject.apps 2")
        << "who was left out does not count";
    EXPECT_FALSE(fixture.has(fixture.bundle("Birch")));
    EXPECT_TRUE(fixture.has(fixture.bundle("Cedar")));

    fixture.model->close();
    fixture.remove({"Cedar"});
    fixture.model->answerQuitPrompt(QuitPromptChoice::cancelApp);
    fixture.settle();
    EXPECT_EQ(fixture.stage(), "review") << "nobody is left to remove";
    EXPECT_FALSE(fixture.model->errorMessage());
    EXPECT_TRUE(lockTrash(fixture.user, fixture.volume.files()));
}

TEST(RemovalFlow, StopsBeforeTheFirstStepWithoutATrace) {
    for (const int rounds : {0, 1, 2, 3}) { // main-thread rounds: refusal checks, quit question, run
        SCOPED_TRACE(rounds);
        FlowFixture fixture;
        fixture.review({"Alpine"});
        fixture.model->confirm();
        for (int i = 0; i < rounds; ++i) {
            fixture.background.drain();
            fixture.main.drain();
        }
        fixture.model->stop();
        fixture.settle();
        const bool isTooLate = rounds == 3;
        EXPECT_EQ(fixture.stage(), isTooLate ? "report" : "review");
        EXPECT_EQ(fixture.has(fixture.bundle("Alpine")), !isTooLate);
        EXPECT_EQ(listQuarantineFolders(fixture.user, fixture.volume.files())->empty(), !isTooLate);
        EXPECT_EQ(fixture.model->errorMessage().has_value(), !isTooLate);
        EXPECT_TRUE(lockTrash(fixture.user, fixture.volume.files()));
        if (isTooLate) continue;
        fixture.running.stubborn = {"com.example.Alpine"};
        fixture.model->confirm();
        fixture.settle();
        ASSERT_TRUE(fixture.model->pendingQuitPrompt());
        fixture.model->stop();
        EXPECT_FALSE(fixture.model->pendingQuitPrompt());
        EXPECT_EQ(fixture.stage(), "review") << "and the choice is still there";
        EXPECT_THAT(fixture.selected(), Contains(fixture.bundle("Alpine").string()));
    }
}

TEST(RemovalFlow, TellsTheStepAtHand) {
    FlowFixture fixture;
    std::vector<std::string> kinds;
    const auto told = fixture.model->progress.observe([&](const auto& at) {
        kinds.push_back(at ? at->kind : "none");
        EXPECT_TRUE(!at || at->step == at->total) << "of many steps at once the newest is told";
    });
    fixture.review({"Alpine"});
    fixture.model->confirm();
    fixture.settle();
    fixture.model->undoLast();
    fixture.settle();
    EXPECT_THAT(kinds, ElementsAre("permissions", "none", "finish", "none", "finish", "none"));
}

} // namespace
} // namespace tidwen::test

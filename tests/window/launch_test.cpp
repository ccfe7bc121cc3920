#include "app/shell/launch.h"
#include "base/log.h"
#include "window_fixture.h"

#include <QTest>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <utility>

namespace tidwen {
namespace {

using std::chrono::milliseconds;

struct LaunchFixture {
    std::function<void(bool isLogin)> told;
    StandardErrorLog log{LogLevel::error};
    int shown = 0, cameBack = 0, ended = 0;
    bool isOpening = false, isNeeded = false;
    Launch launch{{[this] { ++shown; }, [this] { ++cameBack; }, [this] { return isOpening; },
                   [this] { return isNeeded; }, [this] { ++ended; }},
                  [this](auto answer) { told = std::move(answer); },
                  log,
                  {milliseconds(50), milliseconds(50)}};
};

TEST(Launch, ShowsTheWindowToWhoStartsTheProgram) {
    LaunchFixture fixture;
    fixture.launch.cameToFront();
    EXPECT_EQ(fixture.cameBack, 0) << "why it was started is not known yet";
    fixture.told(false);
    EXPECT_EQ(fixture.shown, 1);
    fixture.launch.cameToFront();
    EXPECT_EQ(fixture.cameBack, 1);
    QTest::qWait(150);
    EXPECT_EQ(fixture.shown, 1);
    EXPECT_EQ(fixture.ended, 0);
}

TEST(Launch, ShowsTheWindowWhenNothingTellsWhy) {
    LaunchFixture fixture;
    EXPECT_TRUE(test::waitUntil([&] { return fixture.shown == 1; }));
}

TEST(Launch, StaysAwayAtALoginAndEndsWithNothingToWatch) {
    LaunchFixture watching, idle;
    watching.isNeeded = idle.isOpening = true;
    for (auto* fixture : {&watching, &idle}) {
        fixture->told(true);
        fixture->launch.cameToFront(); // by the login
    }
    QTest::qWait(200);
    for (const auto* fixture : {&watching, &idle}) {
        EXPECT_EQ(fixture->shown + fixture->cameBack, 0);
        EXPECT_EQ(fixture->ended, 0);
    }
    idle.isOpening = false;
    EXPECT_TRUE(test::waitUntil([&] { return idle.ended == 1; }));
    watching.launch.cameToFront(); // by somebody
    EXPECT_EQ(watching.cameBack, 1);
}

} // namespace
} // namespace tidwen

// Applications dropped onto the window, wherever it stands, and a Trash that another process uses.

#include "app/shell/drop_words.h"
#include "posix/rooted_file_system.h"
#include "window/window_fixture.h"

#include <QCoreApplication>
#include <QPushButton>
#include <QTest>
#include <array>
#include <filesystem>
#include <gmock/gmock.h>
#include <set>
#include <string>
#include <variant>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;

class Drops : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(fixture.openSample() && fixture.hasFocus()); }

    template<class Stage>
    bool comesTo() {
        return waitUntil([this] { return std::holds_alternative<Stage>(fixture.flow().stage()); });
    }
    bool isSaid(const char* words) {
        return waitUntil([this, words] { return fixture.says(QString::fromUtf8(words)); });
    }
    std::size_t underReview() { return fixture.flow().choice().findings().groups().size(); }

    WindowFixture fixture;
};

TEST_F(Drops, AreLookedAtAndItIsSaidWhyTheRestIsLeft) {
    auto& session = fixture.window.mac()->session();
    for (const auto& app : session.models().homeGrid().apps())
        if (app->name == "Kip") session.protectedApps().toggle(app->bundleID);
    EXPECT_EQ(
        wordsForDrop(*fixture.window.mac(), {"/disk/Kip.app", "/disk/Marlin Notes.app", "/disk/Library"}),
        QStringLiteral("Drop to see what belongs to 2 applications\nProtected, and left alone: 1"));
    EXPECT_TRUE(
        fixture.drop({"Applications/Marlin Notes.app", "Applications/Kip.app", "Users/alice/Library"}));
    ASSERT_TRUE(comesTo<stage::Review>());
    EXPECT_EQ(underReview(), 1u);
    EXPECT_EQ(fixture.flow().protectedTargets().size(), 1u);
    EXPECT_TRUE(isSaid("Kip"));
    EXPECT_TRUE(fixture.drop({"../elsewhere.app"}));
    EXPECT_TRUE(isSaid("does not lie on this volume"));
    EXPECT_TRUE(std::holds_alternative<stage::Review>(fixture.flow().stage()));
    for (const auto& identifier : std::set(session.protectedApps().bundleIDs())) // a copy: it changes
        session.protectedApps().toggle(identifier); // the settings outlive this test
}

TEST_F(Drops, AreAnsweredInEveryScreen) {
    constexpr std::array places = {Place::leftovers, Place::installers, Place::startupItems, Place::history};
    for (const auto place : places) {
        fixture.window.view()->go(place);
        EXPECT_TRUE(fixture.drop({"Applications/Kip.app"}));
        ASSERT_TRUE(comesTo<stage::Review>());
    }
    fixture.window.openSettings(); // over the review
    EXPECT_TRUE(fixture.drop({"Applications/Lumen.app", "Applications/Kip.app"}));
    ASSERT_TRUE(waitUntil([this] { return underReview() == 2; }));
    QTest::keyClick(fixture.find<QWidget>("sheet"), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    fixture.window.view()->lookAt({Path("/Applications/Kip.app")});
    fixture.drop({"Applications/Lumen.app"}); // during a search
    EXPECT_TRUE(isSaid("A search is running"));
    ASSERT_TRUE(comesTo<stage::Review>());
    ASSERT_TRUE(fixture.click("remove") && fixture.click("confirm"));
    ASSERT_TRUE(comesTo<stage::Removing>());
    fixture.drop({"Applications/Lumen.app"}); // during a removal
    EXPECT_TRUE(isSaid("A removal is running"));
    ASSERT_TRUE(comesTo<stage::Report>());
    fixture.drop({"Applications/Lumen.app"});
    ASSERT_TRUE(comesTo<stage::Review>()) << "the report is left; its undo stands in the history";
    EXPECT_EQ(underReview(), 1u);
}

TEST_F(Drops, OfFiftyInARowLoseNothing) {
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(fixture.drop({i % 2 ? "Applications/Lumen.app" : "Applications/Kip.app"}));
    ASSERT_TRUE(comesTo<stage::Review>());
    EXPECT_EQ(underReview(), 1u);
    EXPECT_TRUE(fixture.flow().choice().summary().totalCount > 0);
}

TEST_F(Drops, AreNotRemovedWhileAnotherProcessUsesTheTrash) {
    const auto trash = fixture.at("Users/alice/.Trash");
    std::filesystem::create_directories(trash);
    const auto other = RootedFileSystem::open(fixture.folder.path() / "Sample");
    auto lock = (*other)->lock(Path("/Users/alice/.Trash"));
    ASSERT_TRUE(lock);
    fixture.drop({"Applications/Kip.app"});
    ASSERT_TRUE(comesTo<stage::Review>());
    const auto chosen = fixture.flow().choice().summary().totalCount;
    ASSERT_TRUE(fixture.click("remove") && fixture.click("confirm"));
    ASSERT_TRUE(comesTo<stage::Review>());
    ASSERT_TRUE(waitUntil([this] { return fixture.flow().errorMessage().has_value(); }));
    EXPECT_TRUE(isSaid(fixture.flow().errorMessage()->c_str()));
    EXPECT_TRUE(std::filesystem::exists(fixture.at("Applications/Kip.app")));
    EXPECT_EQ(fixture.flow().choice().summary().totalCount, chosen) << "the choice stands";
    lock->reset();
    ASSERT_TRUE(fixture.removeWhatIsChosen()) << "and can be removed once the Trash is free";
}

TEST_F(Drops, AreRemovedToTheStepAtHandWhenTheWindowIsClosed) {
    fixture.drop({"Applications/Marlin Notes.app"});
    ASSERT_TRUE(comesTo<stage::Review>());
    ASSERT_TRUE(fixture.click("remove") && fixture.click("confirm"));
    ASSERT_TRUE(waitUntil([&] { return fixture.window.mac()->isBusy(); }));
    EXPECT_FALSE(fixture.window.close()) << "it is asked first";
    const auto words = QString::fromStdString(fixture.texts.text("closing.stop"));
    for (auto* button : fixture.window.findChildren<QPushButton*>())
        if (button->isVisible() && button->text() == words) button->click();
    EXPECT_TRUE(waitUntil([this] { return !fixture.window.isVisible(); }));
    EXPECT_FALSE(fixture.window.mac()->isBusy());
}

} // namespace
} // namespace tidwen

#include "window/window_fixture.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>
#include <fstream>
#include <gmock/gmock.h>

namespace tidwen {
namespace {

using test::nameless;
using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

class PermissionsWindow : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(fixture.openSample() && fixture.hasFocus()); }
    /// From the menu of an application.
    bool open(const char* name) {
        auto* cards = fixture.find<QAbstractItemView>("applications");
        const auto place =
            cards->visualRect(WindowFixture::rowCalled(*cards, QString::fromUtf8(name))).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, cards->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(cards->viewport(), &event);
        for (auto* menu : fixture.window.findChildren<QMenu*>())
            for (auto* action : menu->actions())
                if (menu->isVisible() && action->text() == QStringLiteral("Permissions…")) {
                    menu->close();
                    action->trigger();
                    list = fixture.find<QAbstractItemView>("permissions");
                    return list != nullptr;
                }
        return false;
    }
    int rows() { return list->model()->rowCount(list->rootIndex()); }
    QModelIndex row(const char* name) { return WindowFixture::rowCalled(*list, QString::fromUtf8(name)); }

    WindowFixture fixture;
    QAbstractItemView* list = nullptr;
};

TEST_F(PermissionsWindow, RevokesOneAndThenAllAfterAQuestion) {
    ASSERT_TRUE(open("Marlin Notes"));
    ASSERT_TRUE(waitUntil([this] { return rows() == 5; }));
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    EXPECT_EQ(test::spoken(row("Photos")), QStringLiteral("Photos, Limited"));
    EXPECT_FALSE(fixture.click("revoke")) << "none is current";
    list->setCurrentIndex(row("Calendars"));
    ASSERT_TRUE(fixture.click("revoke"));
    test::pause();
    QTest::keyClick(fixture.window.focusWidget(), Qt::Key_Return); // the main answer is no
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(rows(), 5);
    ASSERT_TRUE(fixture.click("revoke") && fixture.click("revoke now"));
    ASSERT_TRUE(waitUntil([this] { return rows() == 4; }));
    EXPECT_FALSE(row("Calendars").isValid());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_TRUE(fixture.click("revoke all") && fixture.click("revoke now"));
    EXPECT_TRUE(waitUntil([this] { return rows() == 0; }));
    EXPECT_TRUE(fixture.says(QStringLiteral("has no permissions")));
    EXPECT_TRUE(fixture.click("permissions done"));
}

TEST_F(PermissionsWindow, SaysThatADatabaseCannotBeRead) {
    std::ofstream(fixture.at("Users/alice/Library/Application Support/com.apple.TCC/TCC.db"))
        << "no database";
    ASSERT_TRUE(open("Marlin Notes"));
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("could not be read")); }));
    EXPECT_EQ(rows(), 2) << "those of the other database are shown";
}

TEST_F(PermissionsWindow, AreNoRowOfTheReviewWhereNoneWereGiven) {
    ASSERT_TRUE(fixture.review("Kip"));
    EXPECT_FALSE(fixture.openPermissionsOfTheReview());
    EXPECT_FALSE(fixture.says(QStringLiteral("not shown"))) << "nothing is hidden by a search";
}

TEST_F(PermissionsWindow, GivenByPathAreSaidToStayBeforeTheyDo) {
    ASSERT_TRUE(fixture.review("Harbor VPN"));
    ASSERT_TRUE(fixture.click("remove"));
    EXPECT_TRUE(fixture.says(QStringLiteral("given to a program by its path")));
}

TEST_F(PermissionsWindow, OpensFromTheReviewToo) {
    ASSERT_TRUE(fixture.review("Marlin Notes"));
    ASSERT_TRUE(fixture.openPermissionsOfTheReview());
    list = fixture.find<QAbstractItemView>("permissions");
    EXPECT_TRUE(waitUntil([this] { return rows() == 5; }));
}

} // namespace
} // namespace tidwen

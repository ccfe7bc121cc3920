#include "scan/policy/trace_category.h"
#include "window/window_fixture.h"

#include <QAction>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QTest>
#include <algorithm>
#include <gmock/gmock.h>

namespace tidwen {
namespace {

using test::WindowFixture;
using testing::ElementsAre;

class Applications : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(fixture.openSample() && fixture.hasFocus());
        cards = fixture.find<QAbstractItemView>("applications");
    }
    void choose(const char* name, QItemSelectionModel::SelectionFlags how) {
        cards->selectionModel()->setCurrentIndex(WindowFixture::rowCalled(*cards, QString::fromUtf8(name)),
                                                 how);
    }

    WindowFixture fixture;
    QAbstractItemView* cards = nullptr;
};

TEST_F(Applications, ShowDetailsAtASpaceAndAreProtectedAndTaggedFromThere) {
    auto& session = fixture.window.mac()->session();
    choose("Kip", QItemSelectionModel::ClearAndSelect);
    cards->setFocus();
    QTest::keyClick(cards, Qt::Key_Space);
    ASSERT_TRUE(fixture.click("drop.tile.protect"));
    EXPECT_TRUE(session.protectedApps().contains("com.littlefin.kip"));
    session.protectedApps().toggle("com.littlefin.kip");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    choose("Kip", QItemSelectionModel::ClearAndSelect);
    choose("Notes", QItemSelectionModel::Select);
    QTest::keyClick(cards, Qt::Key_Space); // of the current one
    ASSERT_TRUE(fixture.click("details.editTags"));
    fixture.find<QLineEdit>("new tag")->setText(QStringLiteral("  Small  "));
    ASSERT_TRUE(fixture.click("add tag"));
    EXPECT_THAT(session.tags().tags("org.paperplane.notes"), ElementsAre("Small"));
    auto* tags = fixture.find<QListWidget>("tags");
    EXPECT_EQ(tags->item(0)->checkState(), Qt::Checked);
    tags->item(0)->setCheckState(Qt::Unchecked);
    EXPECT_TRUE(session.tags().all().empty());
}

/// Whoever gathers several searches for one after the other.
TEST_F(Applications, StayChosenWhileASearchHidesThem) {
    const auto fields = fixture.window.findChildren<QLineEdit*>(QStringLiteral("search"));
    auto* search = *std::ranges::find_if(fields, &QLineEdit::isVisible);
    const auto says = [this](const char* words) { return fixture.says(QString::fromUtf8(words)); };
    choose("Kip", QItemSelectionModel::ClearAndSelect);
    search->setText(QStringLiteral("lumen"));
    EXPECT_TRUE(says("1 application") && says("not shown: 1"));
    choose("Lumen", QItemSelectionModel::Select);
    choose("Lumen Beta", QItemSelectionModel::Select);
    choose("Lumen Beta", QItemSelectionModel::Toggle);
    search->clear();
    EXPECT_TRUE(says("2 applications") && !says("not shown"));
    EXPECT_EQ(cards->selectionModel()->selectedIndexes().size(), 2);
    search->setText(QStringLiteral("beta"));
    choose("Lumen Beta", QItemSelectionModel::ClearAndSelect); // without the others
    search->clear();
    EXPECT_EQ(cards->selectionModel()->selectedIndexes().size(), 1);
}

TEST_F(Applications, FilterTheirFindsByKindFromTheMenu) {
    ASSERT_TRUE(fixture.review("Marlin Notes"));
    auto* menu = fixture.find<QPushButton>("filter finds")->menu();
    Q_EMIT menu->aboutToShow();
    const auto actions = menu->actions();
    const auto kind = std::ranges::find_if(
        actions, [](const QAction* action) { return action->text().startsWith(QStringLiteral("Caches")); });
    ASSERT_NE(kind, actions.end());
    (*kind)->trigger();
    EXPECT_EQ(fixture.flow().reviewFilter().category, TraceCategory::caches);
    auto* found = fixture.find<QAbstractItemView>("review");
    EXPECT_TRUE(test::waitUntil(
        [&] { return !WindowFixture::rowCalled(*found, QStringLiteral("Preferences")).isValid(); }));
    Q_EMIT menu->aboutToShow();
    menu->actions().back()->trigger();
    EXPECT_FALSE(fixture.flow().reviewFilter().isActive());
    const auto unchosen = [found] {
        const auto& rows = *found->model();
        return rows.match(rows.index(0, 0), Qt::CheckStateRole, Qt::Unchecked, -1,
                          Qt::MatchExactly | Qt::MatchRecursive);
    };
    ASSERT_TRUE(test::waitUntil([&] { return !unchosen().isEmpty(); }));
    Q_EMIT menu->aboutToShow();
    menu->findChild<QAction*>(QStringLiteral("only chosen"))->trigger();
    EXPECT_TRUE(unchosen().isEmpty());
    EXPECT_TRUE(WindowFixture::rowCalled(*found, QStringLiteral("Marlin Notes.app")).isValid());
}

} // namespace
} // namespace tidwen

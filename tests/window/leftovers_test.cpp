#include "window/window_fixture.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <variant>

namespace tidwen {
namespace {

using test::nameless;
using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

class LeftoversWindow : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(fixture.openSample() && fixture.hasFocus());
        found = fixture.find<QAbstractItemView>("leftovers");
    }
    template<class Stage>
    bool isAt() {
        return std::holds_alternative<Stage>(fixture.flow().stage());
    }
    std::size_t chosen() { return static_cast<std::size_t>(fixture.flow().choice().summary().totalCount); }
    QModelIndex row(const char* name) { return WindowFixture::rowCalled(*found, QString::fromUtf8(name)); }

    WindowFixture fixture;
    QAbstractItemView* found = nullptr;
};

TEST_F(LeftoversWindow, FiltersChoosesRemovesAndPutsBackWhatASweepFound) {
    fixture.window.view()->go(Place::leftovers);
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    ASSERT_TRUE(fixture.sweep());
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    EXPECT_EQ(chosen(), 0u);
    EXPECT_FALSE(fixture.click("remove")) << "there is nothing to remove yet";
    EXPECT_TRUE(row("Old Ferry").isValid());

    QSignalSpy resets(found->model(), &QAbstractItemModel::modelReset);
    QTest::keyClicks(found, QStringLiteral("caches/com.oldf"));
    ASSERT_TRUE(waitUntil([this] { return !row("com.gravelworks.gravel").isValid(); }));
    EXPECT_TRUE(row("com.oldferry.timetable").isValid());
    EXPECT_EQ(resets.count(), 0) << "rows come and go one by one";
    ASSERT_TRUE(fixture.click("select safe"));
    EXPECT_EQ(chosen(), 1u) << "what is not shown is not taken";
    EXPECT_TRUE(test::spoken(row("com.oldferry.timetable")).contains(QStringLiteral("selected")));
    const auto fields = fixture.window.findChildren<QLineEdit*>();
    (*std::ranges::find_if(fields, &QLineEdit::isVisible))->setText(QStringLiteral("gravel"));
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("not shown: 1")); }));

    const auto cache = fixture.at("Users/alice/Library/Caches/com.oldferry.timetable");
    ASSERT_TRUE(fixture.removeWhatIsChosen());
    EXPECT_FALSE(std::filesystem::exists(cache));
    ASSERT_TRUE(fixture.click("undo"));
    ASSERT_TRUE(waitUntil([this] { return fixture.flow().undoReport().has_value(); }));
    EXPECT_TRUE(std::filesystem::exists(cache));
    ASSERT_TRUE(fixture.click("done"));
    EXPECT_TRUE(waitUntil([this] {
        return isAt<stage::Orphans>() && row("com.oldferry.timetable").isValid();
    })) << "what was put back is found again";
}

TEST_F(LeftoversWindow, ChoosesByKeyboardAndGoesBackFromTheQuestion) {
    ASSERT_TRUE(fixture.sweep());
    found->setFocus();
    QTest::keyClick(found, Qt::Key_Home); // a tier
    QTest::keyClick(found, Qt::Key_Space);
    const auto all = chosen();
    EXPECT_GT(all, 1u);
    found->setCurrentIndex(row("com.oldferry.timetable"));
    QTest::keyClick(found, Qt::Key_Space);
    EXPECT_EQ(chosen(), all - 1);
    EXPECT_EQ(found->model()->index(0, 0).data(Qt::CheckStateRole), Qt::PartiallyChecked);
    QTest::keyClick(found, Qt::Key_Return);
    auto* sheet = fixture.find<QWidget>("sheet");
    ASSERT_TRUE(sheet && sheet->isVisible());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_TRUE(isAt<stage::Orphans>());
    EXPECT_EQ(chosen(), all - 1);
    fixture.window.view()->go(Place::history);
    EXPECT_TRUE(isAt<stage::History>());
}

TEST_F(LeftoversWindow, SaysWhyNothingCanBeCalledALeftover) {
    std::filesystem::rename(fixture.at("Applications"), fixture.at("Moved"));
    fixture.window.view()->go(Place::leftovers);
    ASSERT_TRUE(fixture.click("empty action"));
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Orphans>(); }));
    EXPECT_FALSE(found->isVisible());
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("There is no /Applications here")); }));
    std::filesystem::rename(fixture.at("Moved"), fixture.at("Applications"));
    ASSERT_TRUE(fixture.click("empty action")) << "one can look again";
    EXPECT_TRUE(waitUntil([this] { return isAt<stage::Orphans>() && found->isVisible(); }));
}

} // namespace
} // namespace tidwen

#include "window/window_fixture.h"

#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
#include <variant>

namespace tidwen {
namespace {

using test::nameless;
using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

class Window : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(fixture.openSample() && fixture.hasFocus()); }

    template<class Stage>
    bool isAt() {
        return std::holds_alternative<Stage>(fixture.flow().stage());
    }
    WindowFixture fixture;
};

TEST_F(Window, RemovesAnApplicationAndPutsItBackByMouse) {
    const auto bundle = fixture.folder.path() / "Sample/Applications/Marlin Notes.app";
    ASSERT_TRUE(std::filesystem::exists(bundle));
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    ASSERT_TRUE(fixture.review("Marlin Notes"));
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    ASSERT_TRUE(fixture.click("remove"));
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    ASSERT_TRUE(fixture.click("confirm"));
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Report>(); }));
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(bundle));
    ASSERT_TRUE(fixture.click("undo"));
    ASSERT_TRUE(waitUntil([this] { return fixture.flow().undoReport().has_value(); }));
    EXPECT_TRUE(std::filesystem::exists(bundle));
    ASSERT_TRUE(fixture.click("done"));
    EXPECT_TRUE(isAt<stage::Idle>());
}

TEST_F(Window, GoesTheSameWayByKeyboardAlone) {
    const auto press = [](Qt::Key key, int line = __builtin_LINE()) {
        ASSERT_TRUE(QApplication::focusWidget()) << "nothing has the focus in line " << line;
        QTest::keyClick(QApplication::focusWidget(), key);
    };
    auto* cards = fixture.find<QAbstractItemView>("applications");
    cards->setFocus();
    QTest::keyClicks(cards, QStringLiteral("pantry")); // what is typed is searched for
    ASSERT_TRUE(waitUntil([&] { return cards->model()->rowCount() == 2; }));
    cards->setFocus();
    press(Qt::Key_Home);
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Review>(); }));
    const auto selected = fixture.flow().choice().summary().totalCount;
    auto* found = fixture.find<QAbstractItemView>("review");
    found->setFocus();
    press(Qt::Key_Home); // the first tier
    press(Qt::Key_Space);
    EXPECT_LT(fixture.flow().choice().summary().totalCount, selected);
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    auto* sheet = fixture.find<QWidget>("sheet");
    ASSERT_TRUE(sheet);
    for (int i = 0; i < 6; ++i) {
        press(Qt::Key_Tab);
        EXPECT_TRUE(sheet->isAncestorOf(QApplication::focusWidget())) << "the focus left the question";
    }
    press(Qt::Key_Escape);
    EXPECT_TRUE(isAt<stage::Review>());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    press(Qt::Key_Return);
    fixture.find<QPushButton>("confirm")->setFocus();
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Report>(); }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(isAt<stage::Idle>());
}

} // namespace
} // namespace tidwen

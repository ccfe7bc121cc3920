#include "window/window_fixture.h"

#include <QLabel>
#include <QMimeData>
#include <QTest>
#include <QUrl>
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <variant>
#include <vector>

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
    void drop(const std::vector<std::string>& names) {
        QList<QUrl> urls;
        for (const auto& name : names)
            urls << QUrl::fromLocalFile(
                QString::fromStdString((fixture.folder.path() / "Sample" / name).string()));
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(400, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&fixture.window, &enter);
        EXPECT_TRUE(fixture.find<QWidget>("drop veil")->isVisible());
        QDropEvent event(QPointF(400, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&fixture.window, &event);
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

TEST_F(Window, LooksAtWhatIsDroppedAndSaysWhyTheRestIsLeft) {
    auto& session = fixture.window.mac()->session();
    for (const auto& app : session.models().homeGrid().apps())
        if (app.name == "Kip") session.protectedApps().toggle(app.bundleID);
    drop({"Applications/Marlin Notes.app", "Applications/Kip.app", "Users/alice/Library"});
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Review>(); }));
    EXPECT_EQ(fixture.flow().choice().findings().groups().size(), 1u);
    EXPECT_EQ(fixture.flow().protectedTargets().size(), 1u);
    EXPECT_TRUE(waitUntil([this] {
        const auto labels = fixture.window.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
            return label->isVisible() && label->text().contains(QStringLiteral("Kip"));
        });
    }));
    drop({"../elsewhere.app"}); // is answered, and leaves the review as it is
    EXPECT_TRUE(isAt<stage::Review>());
}

TEST_F(Window, ShowsHostileNamesAsTextAndNeverAsMarkup) {
    for (const auto* label : fixture.window.findChildren<QLabel*>())
        EXPECT_TRUE(label->textFormat() == Qt::PlainText || label->text().isEmpty())
            << label->text().toStdString();
}

} // namespace
} // namespace tidwen

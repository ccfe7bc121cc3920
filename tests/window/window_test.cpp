#include "base/uuid.h"
#include "support/trees.h"
#include "window/window_fixture.h"

#include <QApplication>
#include <QClipboard>
#include <QPlainTextEdit>
#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
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

TEST_F(Window, NamesEachStepAndTheAdministratorsScriptToBeCopied) {
    ASSERT_TRUE(fixture.review("Harbor VPN"));
    std::vector<Uuid> all;
    for (const auto& group : fixture.flow().choice().findings().groups())
        for (const auto& trace : group.traces)
            all.push_back(trace.id);
    (void)fixture.flow().setSelected(all, true);
    ASSERT_TRUE(fixture.click("remove") && fixture.click("steps") && fixture.click("copy steps"));
    const auto copied = QApplication::clipboard()->text();
    EXPECT_TRUE(copied.startsWith(QStringLiteral("1. "))) << copied.toStdString();
    EXPECT_TRUE(copied.contains(QStringLiteral("#!/bin/sh\n"))) << copied.toStdString();
    EXPECT_TRUE(copied.contains(QStringLiteral("(time of the removal)/"))) << "no folder of now is made";
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
    press(Qt::Key_Down);
    EXPECT_TRUE(cards->currentIndex().isValid()) << "one sees where one is";
    test::pause(); // an earlier test may have left a question that waits for one
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Review>(); }));
    const auto selected = fixture.flow().choice().summary().totalCount;
    auto* found = fixture.find<QAbstractItemView>("review");
    found->setFocus();
    press(Qt::Key_Return);
    EXPECT_FALSE(fixture.find<QWidget>("sheet")) << "pressed before it was read";
    press(Qt::Key_Home); // the first tier
    press(Qt::Key_Space);
    EXPECT_LT(fixture.flow().choice().summary().totalCount, selected);
    press(Qt::Key_Space);
    test::pause();
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
    test::pause();
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([this] { return isAt<stage::Report>(); }));
    press(Qt::Key_Return);
    EXPECT_TRUE(isAt<stage::Report>()) << "pressed before it was read";
    test::pause();
    press(Qt::Key_Return);
    EXPECT_TRUE(isAt<stage::Idle>());
    ASSERT_TRUE(waitUntil([&] { return cards->model()->rowCount() > 2; })) << "still searches for what went";
    EXPECT_EQ(QApplication::focusWidget(), cards);
    EXPECT_FALSE(cards->currentIndex().isValid()) << "one that nobody chose";
    press(Qt::Key_Return);
    EXPECT_TRUE(isAt<stage::Idle>());
}

TEST_F(Window, TellsWhatItCouldNotRead) {
    for (const auto* name : {"Broken", "Cut", "Empty", "Odd"})
        test::writeFile(fixture.at("Applications/" + std::string(name) + ".app/Contents/Info.plist"),
                        "<plist");
    test::writeFile(fixture.at("Users/alice/Library/Application Support/com.apple.TCC/TCC.db"),
                    "no database");
    ASSERT_TRUE(fixture.review("Lumen"));
    EXPECT_TRUE(fixture.says(QStringLiteral("Not all installed applications are known")));
    EXPECT_TRUE(fixture.says(QStringLiteral("1 more")));
    EXPECT_TRUE(fixture.says(QStringLiteral("TCC.db")));
    ASSERT_TRUE(fixture.click("all places"));
    EXPECT_TRUE(fixture.find<QPlainTextEdit>("all lines")->toPlainText().contains(QStringLiteral("Odd.app")));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    ASSERT_TRUE(fixture.removeWhatIsChosen());
    const auto said = [this](const char* words) { // once it is laid out
        return waitUntil([&] { return fixture.says(QString::fromLatin1(words)); });
    };
    EXPECT_TRUE(said("Could not be read, so items may remain there"));
    EXPECT_TRUE(said("Odd.app"));
}

} // namespace
} // namespace tidwen

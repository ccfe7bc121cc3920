#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "window/window_fixture.h"

#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace tidwen {
namespace {

TEST(Sheet, KeepsTheKeysFromAScreenThatTakesTheFocusBelowIt) {
    QWidget window;
    auto* layout = parts::column(&window);
    int below = 0, second = 0;
    auto* screen = parts::primaryButton(QStringLiteral("Below"), [&] { ++below; });
    layout->addWidget(screen);
    window.show();
    QApplication::setActiveWindow(&window);
    auto* sheet = new Sheet(&window, QStringLiteral("Sure?"));
    auto* yes = parts::button(QStringLiteral("Yes"), [&] { ++second; });
    sheet->addAnswers().addWidget(parts::primaryButton(QStringLiteral("No"), [] {}));
    sheet->addAnswers().addWidget(yes);
    sheet->open();

    screen->setFocus();
    EXPECT_TRUE(sheet->isAncestorOf(QApplication::focusWidget()));
    yes->setFocus();
    const auto pressReturn = [](bool isHeld) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), isHeld);
        QApplication::sendEvent(QApplication::focusWidget(), &press);
    };
    for (int i = 0; i < 4; ++i) { // longer than the pause, without one
        pressReturn(false);
        QTest::qWait(200);
    }
    test::pause();
    pressReturn(true);
    EXPECT_EQ(second, 0) << "pressed before it was read, and held down";
    pressReturn(false);
    EXPECT_EQ(second, 1) << "Return presses the button that has the focus";

    auto* above = new Sheet(&window, QStringLiteral("Really?"));
    above->open();
    screen->setFocus();
    EXPECT_EQ(QApplication::focusWidget(), above);
    above->cancel();
    EXPECT_EQ(QApplication::focusWidget(), yes) << "the sheet below has it again";
    sheet->cancel();
    EXPECT_EQ(QApplication::focusWidget(), screen) << "what asked for the focus meanwhile gets it";
    EXPECT_EQ(below, 0);
}

} // namespace
} // namespace tidwen

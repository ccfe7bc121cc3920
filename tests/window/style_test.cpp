#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/parts.h"

#include <QApplication>
#include <QBoxLayout>
#include <QPushButton>
#include <gtest/gtest.h>

namespace tidwen {
namespace {

TEST(Colors, HaveEnoughContrastWhereverTheyMeet) {
    for (const auto appearance : {Appearance::light, Appearance::dark})
        for (const auto& pair : usedColorPairs) {
            const Colors colors(appearance);
            EXPECT_GE(contrast(colors[pair.front], colors[pair.ground]), pair.contrast)
                << static_cast<int>(appearance) << ": " << static_cast<int>(pair.front) << " on "
                << static_cast<int>(pair.ground);
        }
}

TEST(Buttons, KeepTheirColourWhicheverHasTheFocus) {
    QWidget window;
    auto* layout = parts::column(&window);
    auto* main = parts::primaryButton(QStringLiteral("Go"), [] {});
    auto* other = parts::button(QStringLiteral("Stop"), [] {});
    other->setCheckable(true);
    for (auto* button : {main, other})
        layout->addWidget(button);
    window.show();
    QApplication::setActiveWindow(&window);
    const auto ground = [](QPushButton& button) { return button.grab().toImage().pixelColor(12, 8); };
    for (auto* focused : {main, other}) {
        focused->setFocus();
        ASSERT_TRUE(focused->hasFocus());
        EXPECT_EQ(ground(*main), colors()[Role::accent]);
        EXPECT_EQ(ground(*other), colors()[Role::surface]);
    }
    other->setChecked(true);
    EXPECT_EQ(ground(*other), colors()[Role::chosen]);
}

} // namespace
} // namespace tidwen

#include "app/style/palette.h"
#include "app/style/style.h"
#include "window/settings_of_nobody.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int count, char** words) {
    testing::InitGoogleTest(&count, words);
    const tidwen::test::SettingsOfNobody settings;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(count, words);
    tidwen::dress(tidwen::Appearance::light);
    return RUN_ALL_TESTS();
}

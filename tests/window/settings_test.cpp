#include "app/screens/settings/settings_sheet.h"
#include "app/style/appearance.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/picker.h"
#include "base/observable.h"
#include "base/property_list.h"
#include "scan/applications/protected_apps.h"
#include "settings/app_preferences.h"
#include "settings/file_defaults.h"
#include "window/window_fixture.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QMenu>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;

class Settings : public testing::Test {
  protected:
    ~Settings() override {
        std::error_code failure;
        std::filesystem::remove(FileDefaults::defaultFile(), failure); // the tests share it
        wear(Appearance::light);
    }

    /// As another process does.
    std::string stored(const char* name) {
        FileDefaults defaults(FileDefaults::defaultFile(), fixture.log);
        return AppPreferences(defaults).get(name).value_or("");
    }
    void choose(const char* setting, int choice) {
        fixture.find<QPushButton>(setting)->menu()->actions().at(choice)->trigger();
    }

    test::WindowFixture fixture;
};

TEST_F(Settings, TakeEffectAtOnceAndAreStored) {
    ASSERT_TRUE(fixture.openSample());
    fixture.window.openSettings();
    choose("appearance", 2);
    EXPECT_EQ(colors().appearance(), Appearance::dark);
    EXPECT_TRUE(waitUntil([&] { return stored("appearance") == "dark"; }));
    choose("unusedThreshold", 0);
    EXPECT_EQ(fixture.window.mac()->session().preferences().unusedThreshold.get(), "oneMonth");
    ASSERT_TRUE(fixture.click("settings.tab.trash"));
    EXPECT_EQ(fixture.window.findChild<QAbstractButton*>(QStringLiteral("catchTrashedApps")), nullptr)
        << "the Trash of a volume is not watched by the window";
}

TEST_F(Settings, ProtectAnApplicationThatIsSearchedFor) {
    ASSERT_TRUE(fixture.openSample() && fixture.hasFocus());
    auto* cards = fixture.find<QAbstractItemView>("applications");
    cards->selectionModel()->select(WindowFixture::rowCalled(*cards, QStringLiteral("Kip")),
                                    QItemSelectionModel::Select);
    fixture.window.openSettings();
    ASSERT_TRUE(fixture.click("settings.tab.protected") && fixture.click("protect application"));
    fixture.find<QLineEdit>("search applications")->setText(QStringLiteral("KIP"));
    ASSERT_TRUE(fixture.click("choose application"));
    const auto& kept = fixture.window.mac()->session().protectedApps();
    ASSERT_TRUE(waitUntil([&] { return kept.contains("com.littlefin.kip"); }));
    delete fixture.find<QWidget>("sheet");
    const auto isOffered = [this](const QString& word) {
        const auto buttons = fixture.window.findChildren<QPushButton*>();
        return std::ranges::any_of(
            buttons, [&](const auto* each) { return each->isVisible() && each->text() == word; });
    };
    EXPECT_TRUE(waitUntil([&] { return isOffered(QStringLiteral("Stop Protecting")); }))
        << "the word follows what was done elsewhere";
}

TEST_F(Settings, FollowAnotherProcess) {
    ASSERT_TRUE(fixture.openSample());
    fixture.window.openSettings();
    FileDefaults defaults(FileDefaults::defaultFile(), fixture.log);
    AppPreferences(defaults).set("quarantineRetention", "sevenDays");
    ProtectedApps(defaults).toggle("com.littlefin.kip");
    auto* picker = fixture.find<QPushButton>("quarantineRetention");
    EXPECT_TRUE(waitUntil([&] { return picker->text() == QStringLiteral("7 days"); }));
    auto& session = fixture.window.mac()->session();
    EXPECT_TRUE(session.protectedApps().contains("com.littlefin.kip"));
}

TEST_F(Settings, ThatAreDamagedAreSaidToBeAndAreNotWrittenOver) {
    std::filesystem::create_directories(FileDefaults::defaultFile().parent_path());
    std::ofstream(FileDefaults::defaultFile()) << "no property list";
    EXPECT_TRUE(waitUntil([&] { return fixture.own.settings().problem.get().has_value(); }));
    fixture.window.openSettings();
    EXPECT_FALSE(fixture.find<QPushButton>("appearance")->isEnabled());
    choose("appearance", 2);
    EXPECT_NE(colors().appearance(), Appearance::dark);
    std::ifstream file(FileDefaults::defaultFile());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "no property list");
}

TEST_F(Settings, OfANewerVersionStayAsTheyAre) {
    FileDefaults defaults(FileDefaults::defaultFile(), fixture.log);
    ASSERT_TRUE(defaults.setValue("tidwen.quarantineRetention", PropertyListValue("oneCentury")));
    fixture.window.openSettings();
    EXPECT_EQ(fixture.find<QPushButton>("quarantineRetention")->text(), QStringLiteral("Never"));
    EXPECT_EQ(stored("quarantineRetention"), "oneCentury");
}

TEST(AppearanceFollower, FollowsTheDesktopWhileTheChoiceIsTheDesktops) {
    Property<std::string> choice("auto");
    auto desktop = Appearance::dark;
    AppearanceFollower follower(choice, [&] { return desktop; });
    EXPECT_EQ(colors().appearance(), Appearance::dark);
    const auto changeDesktop = [] {
        QEvent event(QEvent::ThemeChange);
        QCoreApplication::sendEvent(qApp, &event);
    };
    desktop = Appearance::light;
    changeDesktop();
    EXPECT_EQ(colors().appearance(), Appearance::light);
    choice.set("dark");
    changeDesktop();
    EXPECT_EQ(colors().appearance(), Appearance::dark);
    wear(Appearance::light);
}

} // namespace
} // namespace tidwen

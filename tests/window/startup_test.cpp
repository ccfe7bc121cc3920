#include "app/models/card_row.h"
#include "app/widgets/row_delegate.h"
#include "app/widgets/sheet.h"
#include "base/message.h"
#include "system/startup_items_model.h"
#include "window/window_fixture.h"

#include <QAbstractButton>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <variant>

namespace tidwen {
namespace {

using test::nameless;
using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

class StartupWindow : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(fixture.openSample() && fixture.hasFocus()); }
    StartupItemsModel& model() { return fixture.window.mac()->session().models().startupItems(); }
    bool show() {
        fixture.window.view()->go(Place::startupItems);
        list = fixture.find<QAbstractItemView>("startup items");
        return waitUntil([this] { return !model().isLoading.get(); });
    }
    QModelIndex row(const char* label) { return WindowFixture::rowCalled(*list, QString::fromUtf8(label)); }
    CardRow::Control control(const char* label) {
        return static_cast<CardRow::Control>(row(label).data(CardRow::control).toInt());
    }
    void clickControl(const char* label) {
        list->scrollTo(row(label));
        const auto* delegate = static_cast<RowDelegate*>(list->itemDelegate());
        const auto places = delegate->placesIn(list->visualRect(row(label)), row(label), Qt::LeftToRight);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, places.control.center());
    }

    WindowFixture fixture;
    QAbstractItemView* list = nullptr;
};

TEST_F(StartupWindow, SwitchesByMouseAndByKeyboard) {
    constexpr auto job = "com.marlinworks.capture";
    ASSERT_TRUE(show());
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    ASSERT_EQ(control(job), CardRow::Control::on);
    clickControl(job);
    EXPECT_EQ(control(job), CardRow::Control::busy);
    ASSERT_TRUE(waitUntil([&] { return control(job) == CardRow::Control::off; }));
    EXPECT_TRUE(test::spoken(row(job)).contains(QStringLiteral("Off, Belongs to Marlin Notes")));
    ASSERT_TRUE(fixture.click("switch")); // the row is the current one
    EXPECT_TRUE(waitUntil([&] { return control(job) == CardRow::Control::on; }));

    ASSERT_EQ(control("net.harborvpn.client.menu"), CardRow::Control::button);
    clickControl("net.harborvpn.client.menu");
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("System Settings")); }))
        << "a volume has none, and says so";
}

TEST_F(StartupWindow, SaysWhyAJobCannotBeSwitched) {
    ASSERT_TRUE(show());
    model().toggleError.set(Message{"startup.toggle.failed %@", {"no such domain"}});
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("no such domain")); }));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(model().toggleError.get()) << "what was read is forgotten";
}

TEST_F(StartupWindow, RemovesAndPutsBackWhatWasLeftBehind) {
    const auto plist = fixture.at("Users/alice/Library/LaunchAgents/com.oldferry.timetable.sync.plist");
    ASSERT_TRUE(show());
    QTest::keyClicks(list, QStringLiteral("timetable.sync"));
    EXPECT_FALSE(row("com.marlinworks.capture").isValid());
    list->setCurrentIndex(row("com.oldferry.timetable.sync"));
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_EQ(model().selection.get().size(), 1u);
    ASSERT_TRUE(fixture.removeWhatIsChosen());
    EXPECT_FALSE(std::filesystem::exists(plist));
    ASSERT_TRUE(fixture.click("undo"));
    ASSERT_TRUE(waitUntil([this] { return fixture.flow().undoReport().has_value(); }));
    EXPECT_TRUE(std::filesystem::exists(plist));
    ASSERT_TRUE(fixture.click("done"));
    EXPECT_TRUE(std::holds_alternative<stage::StartupItems>(fixture.flow().stage()));
    EXPECT_TRUE(waitUntil([this] { return row("com.oldferry.timetable.sync").isValid(); }));
}

TEST_F(StartupWindow, AsksOnlyWhenNothingElseStandsOpenAndInWhateverLanguageIsSpokenThen) {
    ASSERT_TRUE(show() && fixture.click("select orphans") && fixture.click("remove")); // measures first
    fixture.window.openSettings();
    fixture.speak("de");
    bool isMeasured = false;
    fixture.window.mac()->session().background().post([&] { fixture.main.post([&] { isMeasured = true; }); });
    ASSERT_TRUE(waitUntil([&] { return isMeasured; }));
    EXPECT_FALSE(fixture.find<QAbstractButton>("confirm")) << "the settings are open";
    fixture.find<Sheet>("sheet")->cancel();
    test::pause(); // the sheet is deleted by the loop
    EXPECT_TRUE(waitUntil([this] { return fixture.find<QAbstractButton>("confirm") != nullptr; }));
    fixture.speak("en");
}

TEST_F(StartupWindow, NamesFoldersThatCannotBeReadAndShowsTheRest) {
    const auto folder = fixture.at("Users/alice/Library/LaunchAgents");
    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "not a folder";
    ASSERT_TRUE(show());
    EXPECT_TRUE(waitUntil([this] {
        return fixture.says(QStringLiteral("Cannot be read: /Users/alice/Library/LaunchAgents"));
    }));
    EXPECT_TRUE(row("com.brightwell.studio.licensed").isValid());
    EXPECT_FALSE(row("com.marlinworks.capture").isValid());
}

} // namespace
} // namespace tidwen

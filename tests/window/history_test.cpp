#include "quarantine/history_model.h"
#include "window/window_fixture.h"

#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;

class HistoryWindow : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(fixture.openSample() && fixture.hasFocus() && fixture.review("Marlin Notes"));
        ASSERT_TRUE(fixture.removeWhatIsChosen() && fixture.click("done"));
        fixture.window.view()->go(Place::history);
        ASSERT_TRUE(waitUntil([this] { return !model().isLoading.get() && !model().entries.get().empty(); }));
        items = fixture.find<QAbstractItemView>("items");
    }
    HistoryModel& model() { return fixture.window.mac()->session().models().history(); }
    bool isAtRest() { return !model().busyEntryID.get() && !model().isLoading.get(); }

    WindowFixture fixture;
    QAbstractItemView* items = nullptr;
};

TEST_F(HistoryWindow, PutsBackOneItemAndThenTheOthersInAnyLanguage) {
    const auto cache = fixture.at("Users/alice/Library/Caches/com.marlinworks.notes");
    const auto bundle = fixture.at("Applications/Marlin Notes.app");
    const auto isListed = [this] {
        return WindowFixture::rowCalled(*fixture.find<QAbstractItemView>("applications"),
                                        QStringLiteral("Marlin Notes"))
            .isValid();
    };
    ASSERT_FALSE(std::filesystem::exists(cache));
    ASSERT_TRUE(waitUntil([&] { return !isListed(); }));
    items->setCurrentIndex(
        WindowFixture::rowCalled(*items, QStringLiteral("~/Library/Caches/com.marlinworks.notes")));
    ASSERT_TRUE(fixture.click("undo run"));
    ASSERT_TRUE(waitUntil([this] { return isAtRest(); }));
    EXPECT_TRUE(std::filesystem::exists(cache));
    EXPECT_FALSE(std::filesystem::exists(bundle));
    EXPECT_FALSE(items->selectionModel()->hasSelection()) << "what is put back is not chosen any more";

    QTest::keyClick(fixture.find<QWidget>("runs"), Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return isAtRest() && model().lastUndo.get()->totalCount > 1; }));
    EXPECT_TRUE(std::filesystem::exists(bundle));
    EXPECT_TRUE(waitUntil(isListed)) << "the application is back in the list, too";
    fixture.window.openSettings();
    for (const auto* language : {"de", "ja", "system"})
        fixture.speak(language);
    EXPECT_TRUE(fixture.find<QWidget>("runs")->isVisible());
}

} // namespace
} // namespace tidwen

// Past removals in the window: what is left of them, the way back, and what an interrupted one leaves to
// decide.

#include "app/models/history_list.h"
#include "base/path.h"
#include "inventory/home_grid_model.h"
#include "quarantine/history_model.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "window/window_fixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
#include <variant>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;

class HistoryWindow : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(fixture.openSample() && fixture.hasFocus()); }

    SessionModels& models() { return fixture.window.mac()->session().models(); }
    /// Removes an application in the window; its quarantine folder.
    Path remove(const char* name) {
        EXPECT_TRUE(hasApplication(QString::fromLatin1(name)));
        EXPECT_TRUE(fixture.review(name));
        EXPECT_TRUE(fixture.removeWhatIsChosen());
        const auto* report = std::get_if<stage::Report>(&fixture.flow().stage());
        if (!report) return Path("/");
        auto root = report->report.quarantineRoot;
        EXPECT_TRUE(fixture.click("done"));
        return root;
    }
    bool open() {
        fixture.window.view()->go(Place::history);
        return isSettled();
    }
    bool isSettled() {
        auto& history = models().history();
        return waitUntil([&] { return !history.busyEntryID.get() && !history.isLoading.get(); });
    }
    bool hasApplication(const QString& name) {
        return waitUntil([&] {
            return WindowFixture::rowCalled(*fixture.find<QAbstractItemView>("applications"), name).isValid();
        });
    }

    WindowFixture fixture;
};

TEST_F(HistoryWindow, ShowsWhatIsLeftAndBringsTheApplicationBack) {
    remove("Marlin Notes");
    ASSERT_TRUE(open());
    auto* runs = fixture.find<QAbstractItemView>("runs");
    auto* items = fixture.find<QAbstractItemView>("items");
    const auto first = items->model()->index(0, 0);
    items->setCurrentIndex(first);
    ASSERT_TRUE(fixture.click("undo run"));
    ASSERT_TRUE(waitUntil([&] { return models().history().lastUndo.get().has_value(); }) && isSettled());
    EXPECT_EQ(models().history().lastUndo.get()->totalCount, 1);
    EXPECT_FALSE(items->model()->index(0, 0).flags().testFlag(Qt::ItemIsSelectable));
    EXPECT_FALSE(items->selectionModel()->hasSelection());
    const auto left = models().history().entries.get().front().pendingMoves;
    EXPECT_EQ(runs->model()->index(0, 0).data().toString(), QStringLiteral("Today"));
    EXPECT_TRUE(runs->model()
                    ->index(1, 0)
                    .data(HistoryList::second)
                    .toString()
                    .contains(QStringLiteral("%1 of %2").arg(left).arg(left + 1)));

    ASSERT_TRUE(fixture.click("undo run"));
    ASSERT_TRUE(waitUntil([&] { return models().history().entries.get().front().pendingMoves == 0; })
                && isSettled());
    EXPECT_FALSE(fixture.find<QWidget>("undo run")->isEnabled());
    EXPECT_TRUE(runs->hasFocus()) << "not a place of the sidebar";
    EXPECT_TRUE(hasApplication(QStringLiteral("Marlin Notes")));
    ASSERT_TRUE(open());
    EXPECT_FALSE(models().history().lastUndo.get()) << "is told once";
    fixture.window.openSettings();
    for (const auto* language : {"de", "ja", "system"})
        fixture.speak(language);
    EXPECT_TRUE(fixture.find<QWidget>("runs")->isVisible());
}

TEST_F(HistoryWindow, FindsRunsByApplicationAndItemAndKeepsTheCurrentOne) {
    remove("Lumen");
    remove("Kip");
    ASSERT_TRUE(open());
    auto* runs = fixture.find<QAbstractItemView>("runs");
    const auto row = [&](const char* name) {
        return WindowFixture::rowCalled(*runs, QString::fromLatin1(name));
    };
    runs->setCurrentIndex(row("Lumen"));
    models().history().load();
    ASSERT_TRUE(isSettled());
    EXPECT_EQ(runs->currentIndex(), row("Lumen")) << "also when the list was read again";
    QTest::keyClicks(runs, QStringLiteral("kip"));
    EXPECT_TRUE(row("Kip").isValid() && !row("Lumen").isValid());
    auto* search = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_TRUE(search);
    search->setText(QStringLiteral("applications/lumen.app"));
    EXPECT_TRUE(!row("Kip").isValid() && row("Lumen").isValid());
    search->setText(QStringLiteral("nothing like it"));
    EXPECT_TRUE(fixture.says(QStringLiteral("No matches")) && !runs->isVisible());
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_EQ(runs->model()->rowCount(), 3) << "both, and their day";
}

TEST_F(HistoryWindow, TellsWhatComesBackUnderAnotherName) {
    const auto told = [this](const char* path) {
        return fixture.says(QStringLiteral("because the old place was taken: ") + QString::fromLatin1(path));
    };
    ASSERT_TRUE(fixture.review("Kip") && fixture.removeWhatIsChosen());
    std::filesystem::create_directory(fixture.at("Applications/Kip.app"));
    ASSERT_TRUE(fixture.click("undo"));
    EXPECT_TRUE(waitUntil([&] { return told("/Applications/Kip 2.app"); }));
    ASSERT_TRUE(fixture.click("done"));
    remove("Lumen");
    std::filesystem::create_directory(fixture.at("Applications/Lumen.app"));
    ASSERT_TRUE(open());
    ASSERT_TRUE(fixture.click("undo run"));
    EXPECT_TRUE(waitUntil([&] { return told("/Applications/Lumen 2.app"); }));
}

TEST_F(HistoryWindow, DeletesEverythingItAskedAbout) {
    const auto lumen = remove("Lumen");
    const auto root = remove("Kip");
    std::filesystem::rename(fixture.at(lumen.string().substr(1)), fixture.folder.path() / "aside");
    ASSERT_TRUE(open());
    ASSERT_TRUE(fixture.click("delete all"));
    EXPECT_TRUE(std::filesystem::exists(fixture.at(root.string().substr(1))));
    std::filesystem::rename(fixture.folder.path() / "aside", fixture.at(lumen.string().substr(1)));
    models().history().load();
    ASSERT_TRUE(waitUntil([&] { return models().history().entries.get().size() == 2; }));
    ASSERT_TRUE(fixture.click("delete for good"));
    ASSERT_TRUE(waitUntil([&] { return !std::filesystem::exists(fixture.at(root.string().substr(1))); }));
    ASSERT_TRUE(isSettled());
    EXPECT_EQ(models().history().entries.get().size(), 1u)
        << "what came after the question was not asked about";
}

TEST_F(HistoryWindow, AnInterruptedRemovalCanBePutBackOrDismissed) {
    for (const auto* button : {"undo recovered", "dismiss recovered"}) {
        const auto root = remove("Kip");
        auto& files = fixture.window.mac()->session().mac().system.files;
        const auto run = readManifest(root, files).value();
        ASSERT_TRUE(writeJournal(
            {.createdAt = run.createdAt, .quarantineRoot = root, .apps = run.apps, .planned = run.entries},
            root / journalFileName, files));
        ASSERT_TRUE(files.removeFile(root / manifestFileName));
        fixture.window.open(fixture.at(""));
        bool isClicked = false; // once it is laid out
        ASSERT_TRUE(waitUntil([&] { return isClicked = isClicked || fixture.click(button); })) << button;
        auto& chores = fixture.window.mac()->chores();
        ASSERT_TRUE(waitUntil([&] { return !chores.recoveryNotice() && !chores.isUndoing(); })) << button;
        EXPECT_TRUE(!chores.undoReport() || hasApplication(QStringLiteral("Kip")));
    }
}

} // namespace
} // namespace tidwen

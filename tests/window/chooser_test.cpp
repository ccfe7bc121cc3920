#include "sample/sample_volume.h"
#include "window/window_fixture.h"

#include <QAction>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QTest>
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <variant>

namespace tidwen {
namespace {

namespace fs = std::filesystem;
using test::waitUntil;

class Chooser : public testing::Test {
  protected:
    Chooser() { EXPECT_TRUE(writeSampleVolume(volume)); }

    bool isOpen(const std::string& name) {
        return waitUntil([&] { return fixture.window.mac() && fixture.window.mac()->name() == name; });
    }
    bool asks() { return fixture.find<QWidget>("sheet") != nullptr; }
    bool isShown(const char* words) {
        const auto labels = fixture.window.findChildren<QLabel*>();
        return std::ranges::any_of(labels, [&](const QLabel* label) {
            return !label->isHidden() && label->text().contains(QString::fromUtf8(words));
        });
    }

    test::WindowFixture fixture;
    fs::path volume = fixture.folder.path() / "Sample";
};

TEST_F(Chooser, OffersTheVolumesThatWereOpenAndMarksThoseThatAreGone) {
    const auto other = fixture.folder.path() / "Backup";
    ASSERT_TRUE(writeSampleVolume(other));
    fixture.window.open(volume);
    ASSERT_TRUE(isOpen("Sample"));
    fixture.window.open(other);
    ASSERT_TRUE(isOpen("Backup"));
    fs::rename(volume, fixture.folder.path() / "Elsewhere");
    auto* menu = fixture.find<QMenu>("systems");
    Q_EMIT menu->aboutToShow();
    const auto find = [&](const char* words) {
        const auto actions = menu->actions();
        const auto found = std::ranges::find_if(actions, [&](const QAction* action) {
            return action->text().startsWith(QString::fromUtf8(words));
        });
        return found == actions.end() ? nullptr : *found;
    };
    ASSERT_TRUE(find("Backup") && find("Sample"));
    EXPECT_TRUE(waitUntil([&] { return !find("Sample")->isEnabled(); }));
    EXPECT_TRUE(find("Backup")->isEnabled());
}

TEST_F(Chooser, AsksWhoseHomeAndOpensThatOne) {
    fs::create_directories(volume / "Users/berta/Library");
    fixture.window.open(volume);
    ASSERT_TRUE(waitUntil([&] { return asks(); }));
    auto* homes = fixture.find<QListWidget>("homes");
    ASSERT_EQ(homes->count(), 2);
    homes->setCurrentRow(1);
    ASSERT_TRUE(fixture.click("open home") && isOpen("Sample"));
    EXPECT_EQ(fixture.window.mac()->userName(), "berta");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    auto* systems = fixture.find<QMenu>("systems");
    systems->popup(QPoint());
    const auto actions = systems->actions();
    const auto other = std::ranges::find(actions, QStringLiteral("Choose Another Home…"), &QAction::text);
    ASSERT_NE(other, actions.end());
    (*other)->trigger();
    systems->close();
    EXPECT_TRUE(waitUntil([&] { return asks(); }));
}

TEST_F(Chooser, LeavesWhatIsOpenWhereNothingCanBeOpenedOrSomethingIsMoved) {
    ASSERT_TRUE(fixture.openSample());
    const auto* open = fixture.window.mac();
    fixture.window.open(fixture.folder.path() / "nowhere");
    EXPECT_TRUE(waitUntil([&] { return isShown("nowhere"); }));
    ASSERT_TRUE(fixture.review("Marlin Notes") && fixture.click("remove") && fixture.click("confirm"));
    ASSERT_TRUE(waitUntil([&] { return fixture.window.mac()->isBusy(); }));
    fixture.window.openSample();
    EXPECT_TRUE(isShown("before you open another Mac"));
    EXPECT_TRUE(waitUntil([&] { return std::holds_alternative<stage::Report>(fixture.flow().stage()); }));
    EXPECT_EQ(fixture.window.mac(), open);
}

TEST_F(Chooser, RemovesATemporarySampleWhenItIsLeftAndThoseThatACrashLeft) {
    const auto abandoned = fs::temp_directory_path() / "tidwen-sample-abandoned";
    fs::create_directories(abandoned / "Sample");
    fixture.window.openSample();
    ASSERT_TRUE(fixture.isReady());
    EXPECT_FALSE(fs::exists(abandoned));
    const auto folder = fixture.window.mac()->session().mac().volume.value().parent_path();
    ASSERT_TRUE(fixture.review("Marlin Notes") && fixture.removeWhatIsChosen());
    EXPECT_TRUE(fs::exists(folder));
    fixture.window.open(volume);
    EXPECT_TRUE(waitUntil([&] { return !fs::exists(folder); }));
}

TEST_F(Chooser, SaysThatTheVolumeIsGoneAndGoesOnWhenItIsBack) {
    ASSERT_TRUE(fixture.openSample() && fixture.review("Marlin Notes"));
    auto& presence = *fixture.window.mac()->presence();
    fs::rename(volume, fixture.folder.path() / "Elsewhere");
    for (const auto& entry : fs::directory_iterator(fixture.folder.path() / "Elsewhere"))
        fs::create_directories(volume / entry.path().filename()); // another one in its place
    presence.look();
    ASSERT_TRUE(waitUntil([&] { return !presence.isThere.get(); }));
    QTest::keyClick(fixture.find<QWidget>("sheet"), Qt::Key_Escape);
    EXPECT_TRUE(asks()) << "nothing is moved in a folder that went away";
    for (const auto* language : {"de", "en"}) {
        fixture.speak(language);
        EXPECT_TRUE(asks()) << "in another language, too";
    }
    fs::remove_all(volume);
    fs::rename(fixture.folder.path() / "Elsewhere", volume);
    presence.look();
    ASSERT_TRUE(waitUntil([&] { return presence.isThere.get(); }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(asks());
    EXPECT_TRUE(std::holds_alternative<stage::Review>(fixture.flow().stage()));
}

TEST_F(Chooser, RemovesNothingFromAnotherFolderThanItShows) {
    ASSERT_TRUE(fixture.openSample() && fixture.review("Marlin Notes"));
    ASSERT_TRUE(fixture.click("remove"));
    const auto elsewhere = fixture.folder.path() / "Elsewhere";
    fs::rename(volume, elsewhere);
    ASSERT_TRUE(fixture.click("confirm"));
    EXPECT_TRUE(waitUntil([&] { return !fixture.window.mac()->presence()->isThere.get(); }));
    EXPECT_TRUE(std::holds_alternative<stage::Review>(fixture.flow().stage()));
    EXPECT_TRUE(fs::exists(elsewhere / "Applications/Marlin Notes.app"));
}

TEST_F(Chooser, OpensAnewTheDiskThatIsConnectedAnew) {
    ASSERT_TRUE(fixture.openSample());
    auto& presence = *fixture.window.mac()->presence();
    fs::rename(volume, fixture.folder.path() / "Elsewhere");
    presence.look();
    ASSERT_TRUE(waitUntil([&] { return asks(); }));
    ASSERT_TRUE(fixture.click("look again"));
    EXPECT_TRUE(asks());
    fs::copy(fixture.folder.path() / "Elsewhere", volume,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    const auto isOpenedAnew = [&] {
        fixture.click("look again"); // until the look at the empty place has ended
        return !asks() && fixture.window.mac() && fixture.window.mac()->presence()->isThere.get();
    };
    EXPECT_TRUE(waitUntil(isOpenedAnew));
}

TEST_F(Chooser, TellsWhatItDoesInThreeStepsThatCanBeLeftForLater) {
    fixture.window.openOnboarding();
    auto& done = fixture.own.settings().preferences().hasCompletedOnboarding;
    QTest::keyClick(fixture.find<QWidget>("sheet"), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(asks() || done.get());
    fixture.window.openOnboarding();
    for (int step = 0; step < 3; ++step)
        ASSERT_TRUE(fixture.click("next step"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(asks());
    EXPECT_TRUE(done.get());
    EXPECT_FALSE(fixture.own.settings().preferences().catchTrashedApps.get());
}

} // namespace
} // namespace tidwen

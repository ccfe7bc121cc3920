// A window over a disk that does not answer, or answers with errors: it stays usable, and never asks the disk
// itself.

#include "posix/rooted_file_system.h"
#include "program/volume_mac.h"
#include "sample/sample_volume.h"
#include "volume/volume_user.h"
#include "window/governed_files.h"
#include "window/window_fixture.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

constexpr std::array places = {Place::applications, Place::leftovers, Place::installers, Place::startupItems,
                               Place::history};

class SlowDisk : public testing::Test {
  protected:
    void SetUp() override {
        const auto folder = fixture.folder.path() / "Sample";
        ASSERT_TRUE(writeSampleVolume(folder));
        fixture.window.openRunning(
            [this, folder](HostServices& host, const Texts& texts,
                           Log& log) -> tl::expected<std::unique_ptr<OwnedMac>, Message> {
                auto files = RootedFileSystem::open(folder);
                auto user = findVolumeUser(**files, std::nullopt);
                auto governed = std::make_unique<test::GovernedFiles>(std::move(*files), governor);
                return VolumeMac::over(std::move(governed), std::move(*user), folder, host, texts, log);
            });
        ASSERT_TRUE(fixture.isReady() && fixture.hasFocus());
    }
    void TearDown() override { governor->letCallsGo(); }

    SessionModels& models() { return fixture.window.mac()->session().models(); }

    std::shared_ptr<test::FileGovernor> governor = std::make_shared<test::FileGovernor>();
    WindowFixture fixture;
};

TEST_F(SlowDisk, IsNeverAskedByTheThreadThatDraws) {
    auto& window = fixture.window;
    ASSERT_TRUE(fixture.review("Marlin Notes"));
    ASSERT_TRUE(fixture.removeWhatIsChosen());
    ASSERT_TRUE(fixture.click("undo"));
    ASSERT_TRUE(waitUntil([this] { return fixture.flow().undoReport().has_value(); }));
    ASSERT_TRUE(fixture.click("done"));
    ASSERT_TRUE(fixture.sweep());
    ASSERT_TRUE(fixture.click("select safe"));
    ASSERT_TRUE(fixture.removeWhatIsChosen());
    ASSERT_TRUE(fixture.click("done"));
    window.view()->go(Place::installers);
    ASSERT_TRUE(waitUntil([this] { return models().installers().hasLoaded.get(); }));
    ASSERT_TRUE(fixture.click("select matched") && fixture.removeWhatIsChosen() && fixture.click("done"));
    window.view()->go(Place::startupItems);
    ASSERT_TRUE(waitUntil([this] { return !models().startupItems().isLoading.get(); }));
    window.view()->go(Place::history);
    ASSERT_TRUE(waitUntil([this] { return !models().history().entries.get().empty(); }));
    ASSERT_TRUE(fixture.click("undo run"));
    ASSERT_TRUE(waitUntil([this] { return !models().history().busyEntryID.get(); }));
    window.view()->go(Place::applications);
    ASSERT_TRUE(fixture.review("Marlin Sketch") && fixture.openPermissionsOfTheReview());
    window.openSettings();
    EXPECT_THAT(governor->ofWindow(), IsEmpty());
}

TEST_F(SlowDisk, LeavesTheWindowUsableWhenItNeverAnswers) {
    auto& window = fixture.window;
    governor->holdCalls();
    for (const auto place : places) {
        window.view()->go(place);
        window.view()->lookAgain();
        QCoreApplication::processEvents();
        EXPECT_FALSE(window.grab().isNull());
    }
    ASSERT_TRUE(waitUntil([this] { return governor->stopped() > 0; }));
    window.view()->go(Place::applications);
    auto* cards = fixture.find<QAbstractItemView>("applications");
    QTest::keyClicks(cards, QStringLiteral("kip"));
    EXPECT_EQ(cards->model()->rowCount(), 2) << "what is known is searched";
    fixture.speak("de");
    fixture.speak("system");
    window.openSettings();
    ASSERT_TRUE(fixture.click("settings.tab.about"));
    QTest::keyClick(fixture.find<QWidget>("sheet"), Qt::Key_Escape);
    window.view()->lookAt({Path("/Applications/Kip.app")});
    EXPECT_TRUE(std::holds_alternative<stage::Scanning>(fixture.flow().stage()));
    window.view()->go(Place::applications);
    EXPECT_TRUE(std::holds_alternative<stage::Idle>(fixture.flow().stage())) << "the search is given up";
    EXPECT_TRUE(window.close());
    EXPECT_THAT(governor->ofWindow(), IsEmpty());
}

TEST_F(SlowDisk, CanBeLeftForAnotherMacWhenItNeverAnswers) {
    auto& window = fixture.window;
    governor->holdCalls();
    for (const auto place : places) {
        window.view()->go(place);
        window.view()->lookAgain();
    }
    window.view()->lookAt({Path("/Applications/Kip.app")});
    ASSERT_TRUE(waitUntil([this] { return governor->stopped() > 0; }));
    const auto waiting = governor->stopped();
    window.openRunning([this](HostServices&, const Texts&, Log&) {
        governor->pass(Path("/"));
        return tl::unexpected(Message{"never seen"});
    });
    ASSERT_TRUE(waitUntil([&] { return governor->stopped() > waiting; })) << "another that does not answer";
    const auto* left = window.mac();
    window.open(fixture.at(""));
    ASSERT_TRUE(waitUntil([&] { return window.mac() != left; }) && fixture.isReady());
    governor->letCallsGo();
    ASSERT_TRUE(fixture.review("Marlin Notes")) << "while what was left comes to its end";
    EXPECT_FALSE(fixture.says(QStringLiteral("never seen")));
}

TEST_F(SlowDisk, IsSaidToFailInEveryScreen) {
    const std::pair<Place, const char*> said[] = {
        {Place::applications, "Some folders could not be read"},
        {Place::leftovers, "There is no /Applications here"},
        {Place::installers, "Downloads cannot be read"},
        {Place::startupItems, "Startup items cannot be read"},
        {Place::history, "The Trash could not be read"},
    };
    governor->failCalls(FileFault::io);
    for (const auto& [place, words] : said) {
        fixture.window.view()->go(place);
        fixture.window.view()->lookAgain();
        EXPECT_TRUE(waitUntil([&, words = words] { return fixture.says(QString::fromUtf8(words)); }))
            << words;
    }
    fixture.window.view()->lookAt({Path("/Applications/Kip.app")});
    EXPECT_TRUE(waitUntil([this] { return fixture.flow().errorMessage().has_value(); }));
    governor->failCalls(std::nullopt);
    EXPECT_TRUE(fixture.openSample()) << "the disk can be opened again once it answers";
}

} // namespace
} // namespace tidwen

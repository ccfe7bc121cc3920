#include "sweep/installers_model.h"
#include "window/window_fixture.h"

#include <QLineEdit>
#include <QTest>
#include <filesystem>
#include <gmock/gmock.h>
#include <variant>

namespace tidwen {
namespace {

using test::nameless;
using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

class InstallersWindow : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(fixture.openSample() && fixture.hasFocus()); }
    InstallersModel& model() { return fixture.window.mac()->session().models().installers(); }
    bool show() {
        fixture.window.view()->go(Place::installers);
        list = fixture.find<QAbstractItemView>("installers");
        return waitUntil([this] { return model().hasLoaded.get() && !model().isLoading.get(); });
    }
    QModelIndex row(const char* name) { return WindowFixture::rowCalled(*list, QString::fromUtf8(name)); }

    WindowFixture fixture;
    QAbstractItemView* list = nullptr;
};

TEST_F(InstallersWindow, ChoosesRemovesAndPutsBackInstallers) {
    ASSERT_TRUE(show());
    EXPECT_THAT(nameless(fixture.window), IsEmpty());
    EXPECT_FALSE(fixture.click("remove")) << "nothing is chosen beforehand";
    ASSERT_TRUE(fixture.click("select matched"));
    EXPECT_EQ(model().selection.get().size(), 2u);
    EXPECT_TRUE(
        test::spoken(row("Marlin Notes 4.2.1.dmg")).contains(QStringLiteral("selected, Installed: Mar")));

    QTest::keyClicks(list, QStringLiteral("FERRY")); // what is typed is searched for
    EXPECT_FALSE(row("Marlin Notes 4.2.1.dmg").isValid());
    list->setFocus();
    list->setCurrentIndex(row("Old Ferry Setup.dmg"));
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_EQ(model().selection.get().size(), 3u);
    QTest::keyClick(list, Qt::Key_Escape);
    EXPECT_TRUE(row("Marlin Notes 4.2.1.dmg").isValid());
    ASSERT_TRUE(fixture.click("select matched")); // and not again
    EXPECT_EQ(model().selection.get().size(), 1u);

    const auto file = fixture.at("Users/alice/Downloads/Old Ferry Setup.dmg");
    ASSERT_TRUE(fixture.removeWhatIsChosen());
    EXPECT_FALSE(std::filesystem::exists(file));
    ASSERT_TRUE(fixture.click("undo"));
    ASSERT_TRUE(waitUntil([this] { return fixture.flow().undoReport().has_value(); }));
    EXPECT_TRUE(std::filesystem::exists(file));
    ASSERT_TRUE(fixture.click("done"));
    EXPECT_TRUE(std::holds_alternative<stage::Installers>(fixture.flow().stage()));
    EXPECT_TRUE(
        waitUntil([this] { return row("Old Ferry Setup.dmg").isValid() && !model().isLoading.get(); }));
}

TEST_F(InstallersWindow, TellsUnreadableFromEmptyDownloads) {
    const auto downloads = fixture.at("Users/alice/Downloads");
    std::filesystem::remove_all(downloads);
    ASSERT_TRUE(show());
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("Downloads cannot be read")); }));
    std::filesystem::create_directory(downloads);
    ASSERT_TRUE(fixture.click("empty action"));
    EXPECT_TRUE(waitUntil([this] { return fixture.says(QStringLiteral("No installers")); }));
}

} // namespace
} // namespace tidwen

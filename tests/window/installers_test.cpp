#include "sweep/installers_model.h"
#include "window/window_fixture.h"

#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
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

TEST_F(InstallersWindow, ShowsHostileNamesAsTheyAre) {
    const std::string names[] = {
        std::string(196, 'x') + ".dmg", "\u202Egmd.exe.dmg", "🦊🦊.pkg", "a\nb\x01.dmg",
        "<img src=x><b>bold</b>.dmg",   "נייד.dmg"};
    for (const auto& name : names) {
        auto plain = name;
        std::ranges::replace(plain, '/', ':');
        std::ofstream(fixture.at("Users/alice/Downloads") / plain) << "x";
    }
    ASSERT_TRUE(show());
    std::size_t found = 0;
    for (int section = 0; section < list->model()->rowCount(); ++section) {
        const auto above = list->model()->index(section, 0);
        for (int i = 0; i < list->model()->rowCount(above); ++i, ++found) {
            const auto index = list->model()->index(i, 0, above);
            const auto title = index.data().toString();
            EXPECT_FALSE(title.contains(QChar(0x202E)) || title.contains(QLatin1Char('\n'))
                         || title.contains(QChar(1)))
                << title.toStdString();
            EXPECT_FALSE(index.data(Qt::ToolTipRole).toString().contains(QStringLiteral("<b>")));
        }
    }
    EXPECT_EQ(found, 3 + std::size(names));
    EXPECT_FALSE(fixture.window.grab().isNull());
}

} // namespace
} // namespace tidwen

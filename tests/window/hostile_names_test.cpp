// Names on a disk that would do harm as markup, as control characters or by their length: every list shows
// them as text.

#include "base/property_list.h"
#include "sample/sample_volume.h"
#include "window/window_fixture.h"

#include <QCoreApplication>
#include <QLabel>
#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

const std::array names = {std::string(200, 'x'), std::string("\u202Etnemucod"), std::string("🦊🦊\u200F"),
                          std::string("a\nb\x01\x1b[31m"), std::string("<img src=x><b>bold</b>&amp;")};

/// What of the texts that are shown is not shown as text.
std::vector<std::string> notAsText(const QWidget& window) {
    std::vector<std::string> found;
    const auto check = [&](const QString& text, bool mayBeMarkup) {
        const bool isPlain = std::ranges::none_of(text, [](QChar letter) {
            return letter == QChar(0x202E) || letter == QChar(0x200F)
                   || (letter.unicode() < 32 && letter != u'\n');
        });
        if (!isPlain || (mayBeMarkup && text.contains(QStringLiteral("<b>"))))
            found.push_back(text.toStdString());
    };
    for (const auto* label : window.findChildren<QLabel*>())
        check(label->text(), label->textFormat() != Qt::PlainText);
    for (const auto* view : window.findChildren<QAbstractItemView*>()) {
        if (!view->isVisible() || !view->model()) continue;
        const auto& model = *view->model();
        for (const auto& row : model.match(model.index(0, 0), Qt::DisplayRole, QStringLiteral(".*"), -1,
                                           Qt::MatchRegularExpression | Qt::MatchRecursive)) {
            check(row.data().toString(), false);
            check(row.data(Qt::UserRole).toString(), false);
            check(row.data(Qt::AccessibleTextRole).toString(), false);
            check(row.data(Qt::ToolTipRole).toString(), true);
            if (row.data().toString().contains(u'\n')) found.push_back("a line break");
        }
    }
    return found;
}

void write(const std::filesystem::path& file, const std::string& content) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << content;
}

TEST(HostileNames, AreShownAsTextInEveryList) {
    WindowFixture fixture;
    ASSERT_TRUE(writeSampleVolume(fixture.at({})));
    const std::string library = "Users/alice/Library/";
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto id = "com.hostile.app" + std::to_string(i);
        const auto bundle = "Applications/Hostile " + std::to_string(i) + ".app/Contents/";
        write(fixture.at(bundle + "Info.plist"),
              writeBinaryPropertyList(PropertyListDictionary{{"CFBundleIdentifier", id},
                                                             {"CFBundleName", names[i]},
                                                             {"CFBundleExecutable", "run"},
                                                             {"CFBundleShortVersionString", names[i]}}));
        write(fixture.at(bundle + "MacOS/run"), "x");
        auto file = names[i];
        std::ranges::replace(file, '/', ':');
        write(fixture.at(library + "Caches/" + id + "." + file), "x");
        write(fixture.at(library + "Caches/com.oldferry.timetable." + file), "x");
        write(fixture.at("Users/alice/Downloads/" + file + ".dmg"), "x");
        write(fixture.at(library + "LaunchAgents/" + id + ".plist"),
              writeBinaryPropertyList(
                  PropertyListDictionary{{"Label", id + "." + names[i]}, {"Program", "/" + names[i]}}));
    }
    ASSERT_TRUE(fixture.openSample() && fixture.hasFocus());
    auto& window = fixture.window;
    const auto check = [&](const char* screen) {
        SCOPED_TRACE(screen);
        QCoreApplication::processEvents();
        EXPECT_FALSE(window.grab().isNull());
        EXPECT_THAT(notAsText(window), IsEmpty());
    };
    check("applications");
    std::vector<Path> bundles;
    for (std::size_t i = 0; i < names.size(); ++i)
        bundles.emplace_back("/Applications/Hostile " + std::to_string(i) + ".app");
    window.view()->lookAt(bundles);
    ASSERT_TRUE(waitUntil([&] { return std::holds_alternative<stage::Review>(fixture.flow().stage()); }));
    check("review");
    ASSERT_TRUE(fixture.click("remove"));
    check("question");
    ASSERT_TRUE(fixture.click("confirm"));
    ASSERT_TRUE(waitUntil([&] { return std::holds_alternative<stage::Report>(fixture.flow().stage()); }));
    check("report");
    ASSERT_TRUE(fixture.click("done") && fixture.sweep());
    check("leftovers");
    auto& models = window.mac()->session().models();
    window.view()->go(Place::installers);
    ASSERT_TRUE(waitUntil([&] { return models.installers().hasLoaded.get(); }));
    check("installers");
    window.view()->go(Place::startupItems);
    ASSERT_TRUE(waitUntil([&] { return !models.startupItems().isLoading.get(); }));
    check("startup items");
    window.view()->go(Place::history);
    ASSERT_TRUE(waitUntil([&] { return !models.history().entries.get().empty(); }));
    check("history");
}

} // namespace
} // namespace tidwen

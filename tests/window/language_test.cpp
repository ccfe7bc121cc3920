// The window in every language: nothing is lost when another is chosen, and nothing is cut at twice the size.

#include "app/style/palette.h"
#include "app/style/style.h"
#include "base/path.h"
#include "program/host_services.h"
#include "program/resources.h"
#include "settings/app_preferences.h"
#include "window/mirrored_words.h"
#include "window/window_fixture.h"

#include <QAbstractScrollArea>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTextBoundaryFinder>
#include <QTreeView>
#include <functional>
#include <gmock/gmock.h>
#include <string>
#include <variant>
#include <vector>

namespace tidwen {
namespace {

using test::waitUntil;
using test::WindowFixture;
using testing::IsEmpty;

bool isCut(const QLabel& label) {
    if (!label.wordWrap()) return label.sizeHint().width() > label.width();
    if (label.heightForWidth(label.width()) > label.height()) return true;
    QTextBoundaryFinder breaks(QTextBoundaryFinder::Line,
                               label.text()); // also those of Japanese, without spaces
    for (qsizetype from = 0, to = 0; (to = breaks.toNextBoundary()) >= 0; from = to)
        if (label.fontMetrics().horizontalAdvance(label.text().mid(from, to - from).trimmed())
            > label.width())
            return true;
    return false;
}

bool scrolls(const QWidget* widget) {
    for (; widget; widget = widget->parentWidget())
        if (qobject_cast<const QAbstractScrollArea*>(widget)) return true;
    return false;
}

/// The texts that cannot be read whole, or lie outside of the window.
std::vector<std::string> cutTexts(const QWidget& window) {
    std::vector<std::string> cut;
    const auto check = [&](const QWidget& widget, const QString& text, bool isCut) {
        if (text.isEmpty() || !widget.isVisible()) return;
        const QRect place(widget.mapTo(&window, QPoint()), widget.size());
        if (isCut || (!window.rect().contains(place) && !scrolls(&widget))) cut.push_back(text.toStdString());
    };
    for (const auto* label : window.findChildren<QLabel*>())
        check(*label, label->text(), isCut(*label));
    for (const auto* button : window.findChildren<QAbstractButton*>())
        check(*button, button->text(),
              button->sizeHint().width() > button->width() || button->sizeHint().height() > button->height());
    return cut;
}

/// Those that stay cut: what a background task brings is laid out a moment after it is shown.
std::vector<std::string> textsLeftCut(const QWidget& window) {
    waitUntil([&] { return cutTexts(window).empty(); });
    return cutTexts(window);
}

/// Of the text and the window.
struct Size {
    double textScale;
    int width = 0, height = 0; ///< 0: as it opens
};

class Languages : public testing::TestWithParam<Size> {
  protected:
    void SetUp() override {
        test::addMirroredWords(resources.path());
        dress(Appearance::light, GetParam().textScale);
    }
    void TearDown() override {
        dress(Appearance::light);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    }

    /// Speaks every language at one screen; what was done there must stand after each.
    void speakAll(WindowFixture& fixture, const char* screen, const std::function<bool()>& stands) {
        for (const auto& language : availableLanguages(resources.path())) {
            if (GetParam().width > 0 && language == test::mirrored) continue; // its words are longer than any
            SCOPED_TRACE(std::string(screen) + " in " + language);
            fixture.speak(language);
            ASSERT_EQ(fixture.texts.language(), language);
            EXPECT_EQ(fixture.window.layoutDirection(),
                      language == test::mirrored ? Qt::RightToLeft : Qt::LeftToRight);
            EXPECT_THAT(textsLeftCut(fixture.window), IsEmpty());
            EXPECT_TRUE(stands());
        }
        fixture.speak("system");
    }

    test::TemporaryFolder resources;
};

TEST_P(Languages, AreSpokenAtEveryScreenWithoutLosingOrCuttingAnything) {
    WindowFixture fixture(resources.path());
    if (GetParam().width > 0) fixture.window.resize(GetParam().width, GetParam().height);
    speakAll(fixture, "welcome", [] { return true; });
    ASSERT_TRUE(fixture.openSample());

    auto* cards = fixture.find<QAbstractItemView>("applications");
    cards->setCurrentIndex(WindowFixture::rowCalled(*cards, QStringLiteral("Marlin Notes")));
    speakAll(fixture, "applications", [&] {
        const auto chosen =
            fixture.find<QAbstractItemView>("applications")->selectionModel()->selectedIndexes();
        return chosen.size() == 1
               && chosen.front().data().toString().contains(QStringLiteral("Marlin Notes"));
    });

    for (const auto& language : availableLanguages(resources.path())) {
        if (GetParam().width > 0 && language == test::mirrored) continue;
        fixture.speak(language);
        auto* view = fixture.find<QAbstractItemView>("applications");
        QTest::keyClick(view, Qt::Key_Space);
        EXPECT_THAT(textsLeftCut(fixture.window), IsEmpty()) << "details in " << language;
        ASSERT_TRUE(fixture.find<QWidget>("sheet"));
        delete fixture.find<QWidget>("sheet");
    }
    fixture.speak("system");

    ASSERT_TRUE(fixture.review("Marlin Notes"));
    auto* found = fixture.find<QTreeView>("review");
    const auto folded = found->model()->index(1, 0);
    found->collapse(folded);
    const auto row = WindowFixture::rowCalled(*found, QStringLiteral("com.marlinworks.notes"));
    found->setCurrentIndex(row);
    found->model()->setData(row, {}, Qt::CheckStateRole);
    const auto selected = fixture.flow().choice().summary().totalCount;
    speakAll(fixture, "review", [&] {
        const auto* view = fixture.find<QTreeView>("review");
        return view->currentIndex().data().toString().contains(QStringLiteral("com.marlinworks.notes"))
               && !view->isExpanded(view->model()->index(1, 0))
               && view->isExpanded(view->model()->index(0, 0))
               && fixture.flow().choice().summary().totalCount == selected;
    });

    ASSERT_TRUE(fixture.click("remove"));
    speakAll(fixture, "confirm", [&] { return fixture.find<QWidget>("sheet") != nullptr; });
    ASSERT_TRUE(fixture.click("confirm"));
    fixture.speak("de"); // while something is moved
    ASSERT_TRUE(waitUntil([&] { return std::holds_alternative<stage::Report>(fixture.flow().stage()); }));
    speakAll(fixture, "report", [&] { return fixture.find<QWidget>("undo")->isEnabled(); });
    ASSERT_TRUE(fixture.click("done"));
    EXPECT_EQ(fixture.find<QTreeView>("review")->model()->rowCount(), 0) << "its findings are gone";

    fixture.window.view()->go(Place::history);
    auto& history = fixture.window.mac()->session().models().history();
    ASSERT_TRUE(waitUntil([&] { return !history.isLoading.get() && !history.entries.get().empty(); }));
    speakAll(fixture, "history", [&] { return fixture.find<QWidget>("undo run")->isEnabled(); });
}

TEST_P(Languages, AreSpokenInTheListsAndTheSettingsWithoutCuttingAnything) {
    WindowFixture fixture(resources.path());
    if (GetParam().width > 0) fixture.window.resize(GetParam().width, GetParam().height);
    ASSERT_TRUE(fixture.openSample() && fixture.sweep());
    const auto isDrawn = [] { return true; };
    speakAll(fixture, "leftovers", isDrawn);
    auto& models = fixture.window.mac()->session().models();
    fixture.window.view()->go(Place::installers);
    ASSERT_TRUE(waitUntil([&] { return models.installers().hasLoaded.get(); }));
    speakAll(fixture, "installers", [&] { return fixture.find<QWidget>("installers")->isVisible(); });
    fixture.window.view()->go(Place::startupItems);
    ASSERT_TRUE(waitUntil([&] { return !models.startupItems().isLoading.get(); }));
    speakAll(fixture, "startup items", [&] { return fixture.find<QWidget>("startup items")->isVisible(); });
    fixture.window.openSettings();
    for (const auto* tab : {"general", "permissions", "trash", "protected", "about"}) {
        const auto name = std::string("settings.tab.") + tab;
        ASSERT_TRUE(fixture.click(name.c_str()));
        speakAll(fixture, tab, [&] { return fixture.find<QAbstractButton>(name.c_str())->isChecked(); });
    }
}

TEST_P(Languages, ChangeDuringASearchAndWhenAnotherProcessChoosesOne) {
    WindowFixture fixture(resources.path());
    ASSERT_TRUE(fixture.openSample());
    const auto search = [&]() -> QLineEdit* { // of the screen that shows
        for (auto* field : fixture.window.findChildren<QLineEdit*>())
            if (field->isVisible()) return field;
        return nullptr;
    };
    search()->setText(QStringLiteral("kip"));
    fixture.window.view()->lookAt({Path("/Applications/Kip.app")});
    ASSERT_TRUE(std::holds_alternative<stage::Scanning>(fixture.flow().stage()));
    fixture.speak("ja");
    ASSERT_TRUE(waitUntil([&] { return std::holds_alternative<stage::Review>(fixture.flow().stage()); }));
    fixture.window.view()->go(Place::applications);
    ASSERT_TRUE(search());
    EXPECT_EQ(search()->text(), QStringLiteral("kip"));

    HostServices other({"tidwen"}, fixture.log);
    AppPreferences(other.defaults()).language.set("de");
    ASSERT_TRUE(waitUntil([&] { return fixture.texts.language() == "de"; }));
    AppPreferences(other.defaults()).language.set("system");
    EXPECT_TRUE(waitUntil([&] { return fixture.texts.language() == "en"; }));
}

INSTANTIATE_TEST_SUITE_P(Sizes, Languages, testing::Values(Size{2}, Size{1, 800, 560}), [](const auto& size) {
    return std::string(size.param.textScale > 1 ? "TwiceTheText" : "LeastWindow");
});

} // namespace
} // namespace tidwen

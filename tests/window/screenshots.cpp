// Draws every screen of the window on the sample volume: screenshots OUT. Call it offscreen.

#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/sheet.h"
#include "base/message.h"
#include "window/mirrored_words.h"
#include "window/settings_of_nobody.h"
#include "window/window_fixture.h"

#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QTest>
#include <cstdio>
#include <filesystem>
#include <string>
#include <variant>

namespace {

using namespace tidwen;
using test::WindowFixture;

class Drawing {
  public:
    Drawing(QString folder, QString look, std::string language, QSize window)
        : folder_(std::move(folder)),
          look_(std::move(look)),
          language_(std::move(language)),
          window_(window) {
        test::addMirroredWords(resources_.path());
    }

    void begin(WindowFixture& fixture) const {
        if (window_.isValid()) fixture.window.resize(window_);
        fixture.speak(language_);
    }

    bool save(QWidget& window, const char* name) const {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents(); // what the first asked for: layouts, then paint
        return saveAtOnce(window, name);
    }

    /// Lays out, and lets nothing else go on.
    bool saveAtOnce(QWidget& window, const char* name) const {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        const auto file = QStringLiteral("%1/%2-%3.png").arg(folder_, QString::fromLatin1(name), look_);
        return window.grab().save(file);
    }

    const std::filesystem::path& resources() const { return resources_.path(); }
    bool isOfLeastWindow() const { return window_.isValid(); }
    bool isDark() const { return look_ == QStringLiteral("dark"); }

  private:
    QString folder_;
    QString look_;
    std::string language_;
    QSize window_; ///< none: as it opens
    test::TemporaryFolder resources_;
};

void closeSheet(WindowFixture& fixture) {
    QTest::keyClick(fixture.find<QWidget>("sheet"), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Each page of the settings.
bool drawSettings(WindowFixture& fixture, const Drawing& drawing) {
    auto& window = fixture.window;
    window.openSettings();
    bool isDrawn = drawing.save(window, "settings");
    for (const auto* tab : {"permissions", "trash", "protected", "about"})
        isDrawn = isDrawn && fixture.click((std::string("settings.tab.") + tab).c_str())
                  && drawing.save(window, (std::string("settings-") + tab).c_str());
    closeSheet(fixture);
    return isDrawn;
}

/// Questions and notes that stand over what was there before.
bool drawSheets(WindowFixture& fixture, const Drawing& drawing) {
    auto& window = fixture.window;
    window.openOnboarding();
    bool isDrawn = drawing.save(window, "onboarding") && fixture.click("next step")
                   && drawing.save(window, "onboarding-access") && fixture.click("next step")
                   && drawing.save(window, "onboarding-trash");
    closeSheet(fixture);
    auto* cards = fixture.find<QAbstractItemView>("applications");
    auto& tags = window.mac()->session().tags();
    (void)tags.add("com.littlefin.kip", "Small");
    (void)tags.add("com.marlinworks.notes", "Writing");
    cards->setFocus();
    QTest::keyClick(cards, Qt::Key_Space);
    isDrawn = isDrawn && drawing.save(window, "details") && fixture.click("details.editTags")
              && drawing.save(window, "tags");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the details, which are closed
    closeSheet(fixture);
    auto* menu = fixture.find<QMenu>("systems");
    menu->popup(QPoint());
    isDrawn = isDrawn && drawing.save(*menu, "systems");
    menu->close();
    auto& isThere = window.mac()->presence()->isThere;
    isThere.set(false);
    isDrawn = isDrawn && drawing.save(window, "gone");
    isThere.set(true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return isDrawn;
}

/// One walk from the first start to the report, its undo and the history.
bool draw(const Drawing& drawing) {
    WindowFixture fixture(drawing.resources());
    drawing.begin(fixture);
    auto& window = fixture.window;
    fixture.own.settings().set("appearance", drawing.isDark() ? "dark" : "light");
    bool isDrawn = drawing.save(window, "first-start") && fixture.openSample();
    auto* cards = fixture.find<QAbstractItemView>("applications");
    if (!isDrawn || !cards) return false;
    cards->setCurrentIndex(WindowFixture::rowCalled(*cards, QStringLiteral("Marlin Notes")));
    isDrawn = drawing.save(window, "home") && drawSettings(fixture, drawing) && drawSheets(fixture, drawing)
              && fixture.review("Marlin Notes");
    auto* found = fixture.find<QAbstractItemView>("review");
    found->setCurrentIndex(WindowFixture::rowCalled(*found, QStringLiteral("com.marlinworks.notes")));
    found->scrollToTop();
    isDrawn = isDrawn && drawing.save(window, "review") && fixture.click("remove")
              && drawing.save(window, "confirm");
    bool isSeenAtWork = false; // the sample is removed before the next paint
    const auto atWork = fixture.flow().progress.observe([&](const auto& step) {
        if (step && !isSeenAtWork) isSeenAtWork = drawing.saveAtOnce(window, "removing");
    });
    isDrawn =
        isDrawn && fixture.click("confirm")
        && test::waitUntil([&] { return std::holds_alternative<stage::Report>(fixture.flow().stage()); })
        && isSeenAtWork && drawing.save(window, "report");
    fixture.click("done");
    window.view()->go(Place::history);
    auto& history = window.mac()->session().models().history();
    return isDrawn
           && test::waitUntil([&] { return !history.isLoading.get() && !history.entries.get().empty(); })
           && drawing.save(window, "history");
}

QAbstractItemView* current(WindowFixture& fixture, const char* list, const char* row) {
    auto* view = fixture.find<QAbstractItemView>(list);
    view->setCurrentIndex(WindowFixture::rowCalled(*view, QString::fromLatin1(row)));
    return view;
}

/// What was left behind, in each of its states.
bool drawLeftovers(const Drawing& drawing) {
    WindowFixture fixture(drawing.resources());
    drawing.begin(fixture);
    auto& window = fixture.window;
    if (!fixture.openSample()) return false;
    window.view()->go(Place::leftovers);
    bool isDrawn = drawing.save(window, "leftovers-before") && fixture.sweep()
                   && drawing.save(window, "leftovers") && fixture.click("select safe");
    current(fixture, "leftovers", "com.oldferry.timetable");
    isDrawn = isDrawn && drawing.save(window, "leftovers-chosen");
    auto filter = fixture.flow().sweep().filter();
    filter.query = "no such thing";
    fixture.flow().sweep().setFilter(filter);
    auto* list = fixture.find<QAbstractItemView>("leftovers");
    isDrawn = isDrawn && test::waitUntil([&] { return !list->isVisible(); })
              && drawing.save(window, "leftovers-no-match");
    std::filesystem::rename(fixture.at("Applications"), fixture.at("Moved"));
    window.view()->lookAgain();
    return isDrawn && drawing.save(window, "leftovers-sweeping")
           && test::waitUntil([&] { return std::holds_alternative<stage::Orphans>(fixture.flow().stage()); })
           && drawing.save(window, "leftovers-undecided");
}

/// Installers, chosen and not, and a folder that cannot be read.
bool drawInstallers(const Drawing& drawing) {
    WindowFixture fixture(drawing.resources());
    drawing.begin(fixture);
    auto& window = fixture.window;
    if (!fixture.openSample()) return false;
    auto& model = window.mac()->session().models().installers();
    const auto show = [&] {
        window.view()->go(Place::installers);
        return test::waitUntil([&] { return model.hasLoaded.get() && !model.isLoading.get(); });
    };
    window.view()->go(Place::installers);
    bool isDrawn = drawing.save(window, "installers-loading") && show() && fixture.click("select matched");
    current(fixture, "installers", "Old Ferry Setup.dmg");
    isDrawn = isDrawn && drawing.save(window, "installers");
    const auto downloads = fixture.at("Users/alice/Downloads");
    std::filesystem::remove_all(downloads);
    isDrawn = isDrawn && show() && drawing.save(window, "installers-unreadable");
    std::filesystem::create_directory(downloads);
    return isDrawn && show() && drawing.save(window, "installers-empty");
}

/// What starts by itself, and the permissions of an application over the review.
bool drawStartupItems(const Drawing& drawing) {
    WindowFixture fixture(drawing.resources());
    drawing.begin(fixture);
    auto& window = fixture.window;
    if (!fixture.openSample()) return false;
    auto& models = window.mac()->session().models();
    const auto show = [&] {
        window.view()->go(Place::startupItems);
        return test::waitUntil([&] { return !models.startupItems().isLoading.get(); });
    };
    bool isDrawn = show() && fixture.click("select orphans");
    current(fixture, "startup items", "com.marlinworks.capture");
    isDrawn = isDrawn && drawing.save(window, "startup");
    models.startupItems().toggleError.set(Message{"startup.toggle.cancelled"});
    isDrawn = isDrawn && drawing.save(window, "startup-failed");
    fixture.find<Sheet>("sheet")->cancel();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto agents = fixture.at("Users/alice/Library/LaunchAgents");
    std::filesystem::rename(agents, fixture.at("agents"));
    std::filesystem::copy_file(fixture.at("Users/alice/Documents/Novel.txt"), agents);
    isDrawn = isDrawn && show() && drawing.save(window, "startup-unreadable");
    std::filesystem::remove(agents);
    std::filesystem::rename(fixture.at("agents"), agents);
    window.view()->go(Place::applications);
    // The details, which open the permissions, have no room beside the review there.
    if (drawing.isOfLeastWindow()) return isDrawn;
    if (!isDrawn || !fixture.review("Marlin Notes") || !fixture.openPermissionsOfTheReview()) return false;
    auto* list = fixture.find<QAbstractItemView>("permissions");
    isDrawn = test::waitUntil([&] { return list->model()->rowCount(list->rootIndex()) > 0; });
    list->setCurrentIndex(list->model()->index(0, 0, list->rootIndex()));
    return isDrawn && drawing.save(window, "permissions") && fixture.click("revoke")
           && drawing.save(window, "permissions-question");
}

} // namespace

int main(int count, char** words) {
    const test::SettingsOfNobody settings;
    QApplication application(count, words);
    const auto out = QString::fromLocal8Bit(count > 1 ? words[1] : ".");
    if (!QDir().mkpath(out)) return 1;
    struct {
        const char* name;
        Appearance appearance;
        double scale;
        std::string language;
        QSize window = {};
    } const looks[] = {{"light", Appearance::light, 1, "en"},
                       {"dark", Appearance::dark, 1, "en"},
                       {"200", Appearance::light, 2, "en"},
                       {"german", Appearance::light, 1, "de"},
                       {"mirrored", Appearance::light, 1, std::string(test::mirrored)},
                       {"small", Appearance::light, 2, "pt-BR", QSize(800, 560)}};
    for (const auto& look : looks) {
        dress(look.appearance, look.scale);
        const Drawing drawing(out, QString::fromLatin1(look.name), look.language, look.window);
        if (!draw(drawing) || !drawLeftovers(drawing) || !drawInstallers(drawing)
            || !drawStartupItems(drawing)) {
            std::fprintf(stderr, "screenshots: the walk in %s ended early\n", look.name);
            return 1;
        }
    }
    return 0;
}

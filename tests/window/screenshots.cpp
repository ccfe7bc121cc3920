// Draws every screen of the window on the sample volume: screenshots OUT. Call it offscreen.

#include "app/style/style.h"
#include "window/settings_of_nobody.h"
#include "window/window_fixture.h"

#include <QApplication>
#include <QDir>
#include <QTest>
#include <cstdio>

namespace {

using namespace tidwen;
using test::WindowFixture;

class Drawing {
  public:
    Drawing(QString folder, QString look) : folder_(std::move(folder)), look_(std::move(look)) {}

    bool save(QWidget& window, const char* name) const {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents(); // what the first asked for: layouts, then paint
        const auto file = QStringLiteral("%1/%2-%3.png").arg(folder_, QString::fromLatin1(name), look_);
        return window.grab().save(file);
    }

  private:
    QString folder_;
    QString look_;
};

/// One walk from the first start to the report, its undo and the history.
bool draw(const Drawing& drawing) {
    WindowFixture fixture;
    auto& window = fixture.window;
    bool isDrawn = drawing.save(window, "first-start") && fixture.openSample();
    auto* cards = fixture.find<QAbstractItemView>("applications");
    if (!isDrawn || !cards) return false;
    cards->setCurrentIndex(WindowFixture::rowCalled(*cards, QStringLiteral("Marlin Notes")));
    isDrawn = drawing.save(window, "home") && fixture.review("Marlin Notes");
    auto* found = fixture.find<QAbstractItemView>("review");
    found->setCurrentIndex(WindowFixture::rowCalled(*found, QStringLiteral("com.marlinworks.notes")));
    found->scrollToTop();
    isDrawn = isDrawn && drawing.save(window, "review") && fixture.click("remove")
              && drawing.save(window, "confirm") && fixture.click("confirm");
    isDrawn = isDrawn && test::waitUntil([&] {
                  return fixture.flow().progress.get()
                         || std::holds_alternative<stage::Report>(fixture.flow().stage());
              });
    isDrawn =
        isDrawn && drawing.save(window, "removing")
        && test::waitUntil([&] { return std::holds_alternative<stage::Report>(fixture.flow().stage()); })
        && drawing.save(window, "report");
    fixture.click("done");
    window.view()->go(Place::history);
    auto& history = window.mac()->session().models().history();
    return isDrawn
           && test::waitUntil([&] { return !history.isLoading.get() && !history.entries.get().empty(); })
           && drawing.save(window, "history");
}

} // namespace

int main(int count, char** words) {
    const test::SettingsOfNobody settings;
    QApplication application(count, words);
    const auto out = QString::fromLocal8Bit(count > 1 ? words[1] : ".");
    if (!QDir().mkpath(out)) return 1;
    const std::pair<Appearance, double> looks[] = {
        {Appearance::light, 1}, {Appearance::dark, 1}, {Appearance::light, 2}};
    for (const auto& [appearance, scale] : looks) {
        dress(appearance, scale);
        const auto* look = scale > 1 ? "200" : appearance == Appearance::dark ? "dark" : "light";
        if (!draw({out, QString::fromLatin1(look)})) {
            std::fprintf(stderr, "screenshots: the walk in %s ended early\n", look);
            return 1;
        }
    }
    return 0;
}

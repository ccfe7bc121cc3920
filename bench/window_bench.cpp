// Measures the window over long lists, painting included, and how long it takes to appear, compared with an
// empty window of the same style. Usage: window_bench APPLICATIONS LEFTOVERS, two volumes with many of them.
// Draws offscreen and keeps its settings in the first one.

#include "app/models/own_services.h"
#include "app/models/spoken_language.h"
#include "app/shell/mac_opener.h"
#include "app/shell/main_loop.h"
#include "app/shell/main_window.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "base/executor.h"
#include "base/log.h"
#include "base/texts.h"
#include "command.h"
#include "inventory/home_grid_model.h"
#include "program/host_services.h"
#include "program/resources.h"
#include "removal/flow_types.h"
#include "stopwatch.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

using namespace tidwen;

namespace {

/// An application that knows how long its thread was occupied, and when something was painted.
class TimedApplication final : public QApplication {
  public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        if (depth_++ == 0) timer_.start();
        const bool isTaken = QApplication::notify(receiver, event);
        if (event->type() == QEvent::Paint) hasPainted = true;
        if (--depth_ == 0) busy += static_cast<double>(timer_.nsecsElapsed()) / 1e6;
        return isTaken;
    }

    double busy = 0; ///< milliseconds
    bool hasPainted = false;

  private:
    int depth_ = 0;
    QElapsedTimer timer_;
};

/// The window as the program makes it.
struct Window {
    explicit Window(const std::string& volume) { window.open(volume); }

    StandardErrorLog log{LogLevel::error};
    Texts texts = Texts::load(TIDWEN_RESOURCES, "en");
    MainLoop main;
    HostServices host{{"tidwen"}, log};
    WorkQueue background;
    MacOpener opener{host, texts, log, main, background};
    OwnServices own{host, log, main, {"1.0", {}, {}}, availableLanguages(TIDWEN_RESOURCES)};
    SpokenLanguage language{texts, TIDWEN_RESOURCES, own.settings().preferences().language};
    MainWindow window{{opener, language, main, background, own}};
};

/// One list on the screen, with what people do to it.
class ListTest {
  public:
    ListTest(TimedApplication& application, const char* title, QAbstractItemView& view,
             std::function<std::size_t()> shown)
        : application_(application), title_(title), view_(view), shown_(std::move(shown)) {}

    bool run(const std::vector<const char*>& typed) {
        std::printf("%s: %zu rows\n", title_, shown_());
        bool holds = scroll();
        holds &= select();
        return filter(typed) && holds;
    }

    bool tick() {
        pressing(Qt::Key_Down);
        return print("ticking a box", pressing(Qt::Key_Space));
    }

  private:
    /// The milliseconds for which the thread of the window is occupied by a change and what follows of it.
    double frame(
        const std::function<void()>& change, const std::function<bool()>& isDone = [] { return true; }) {
        QMetaObject::invokeMethod(&view_, change, Qt::QueuedConnection);
        application_.busy = 0;
        application_.hasPainted = false;
        while (!application_.hasPainted || !isDone())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::processEvents();
        return application_.busy;
    }

    bool print(const char* what, const std::vector<double>& frames) const {
        std::printf("  %-40s slowest %.2f ms\n", what, *std::ranges::max_element(frames));
        return tidwen::bench::printRatio((std::string("  ") + what + ", ms").c_str(),
                                         tidwen::bench::median(frames), "<=", 16);
    }

    bool scroll() {
        auto* bar = view_.verticalScrollBar();
        std::vector<double> frames;
        for (int i = 0; i < steps; ++i)
            frames.push_back(frame([&] { bar->setValue(bar->maximum() / steps * (i + 1)); }));
        bar->setValue(0);
        return print("scrolling", frames);
    }

    bool select() { return print("going to the next row", pressing(Qt::Key_Down)); }

    std::vector<double> pressing(int key) {
        std::vector<double> frames;
        for (int i = 0; i < steps; ++i)
            frames.push_back(frame([&] {
                QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
                QCoreApplication::sendEvent(&view_, &press);
            }));
        return frames;
    }

    bool filter(const std::vector<const char*>& typed) {
        QLineEdit* search = nullptr;
        for (auto* field : view_.window()->findChildren<QLineEdit*>())
            if (field->isVisible()) search = field;
        std::vector<double> frames;
        auto before = shown_();
        for (const char* words : typed) {
            frames.push_back(frame([&] { search->setText(QString::fromLatin1(words)); },
                                   [&] { return shown_() != before; }));
            before = shown_();
            std::printf("  \"%s\": %zu rows, %.2f ms\n", words, before, frames.back());
        }
        return print("filtering", frames);
    }

    static constexpr int steps = 40;
    TimedApplication& application_;
    const char* title_;
    QAbstractItemView& view_;
    std::function<std::size_t()> shown_;
};

void waitUntil(const std::function<bool()>& isDone) {
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

bool testApplications(TimedApplication& application, const std::string& volume) {
    Window opened(volume);
    auto& window = opened.window;
    window.show();
    waitUntil([&] { return window.mac() != nullptr; });
    auto& grid = window.mac()->session().models().homeGrid();
    waitUntil(
        [&] { return grid.phase.get() == HomeGridModel::Phase::ready && window.mac()->chores().isDone(); });
    auto* view = window.findChild<QAbstractItemView*>(QStringLiteral("applications"));
    view->setFocus();
    return ListTest(application, "applications", *view, [&] { return grid.rows.rows().size(); })
        .run({"1", "12", "123", "", "9", ""});
}

bool testLeftovers(TimedApplication& application, const std::string& volume) {
    Window opened(volume);
    auto& window = opened.window;
    window.show();
    waitUntil([&] { return window.mac() && window.mac()->chores().isDone(); });
    window.view()->go(Place::leftovers);
    for (auto* button : window.findChildren<QAbstractButton*>(QStringLiteral("empty action")))
        if (button->isVisible()) button->click();
    auto* view = window.findChild<QAbstractItemView*>(QStringLiteral("leftovers"));
    waitUntil([&] {
        return std::holds_alternative<stage::Orphans>(window.mac()->flow().stage()) && view->isVisible();
    });
    view->setFocus();
    ListTest list(application, "leftovers", *view,
                  [&] { return window.mac()->flow().sweep().rows.rows().size(); });
    const bool holds = list.run({"1", "12", "123", "", "9", ""});
    return list.tick() && holds;
}

/// Shows a window and ends with its first paint.
int showOnce(TimedApplication& application, const std::string& volume) {
    std::unique_ptr<Window> ours;
    std::unique_ptr<QWidget> empty;
    if (volume.empty()) {
        empty = std::make_unique<QWidget>();
        empty->resize(1080, 720);
        empty->show();
    } else {
        ours = std::make_unique<Window>(volume);
        ours->window.show();
    }
    waitUntil([&] { return application.hasPainted; });
    std::_Exit(0);
}

bool testStart(const std::string& program, const std::string& volume) {
    const auto seconds = tidwen::bench::secondsOf(15, {[&] {
                                                           tidwen::bench::run({program, "--show", ""}, 2);
                                                       },
                                                       [&] {
                                                           tidwen::bench::run({program, "--show", volume}, 2);
                                                       }});
    std::printf("start to first paint: %.1f ms, an empty window %.1f ms\n", seconds[1] * 1e3,
                seconds[0] * 1e3);
    return tidwen::bench::printRatio("first paint against an empty window", seconds[1] / seconds[0],
                                     "<=", 1.5);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return std::fprintf(stderr, "usage: window_bench APPLICATIONS LEFTOVERS\n"), 2;
    const bool isShowing = std::string_view(argv[1]) == "--show";
    if (!isShowing) qputenv("XDG_CONFIG_HOME", argv[1]);
    if (!isShowing) qputenv("XDG_DATA_HOME", argv[1]);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::string first = argv[1], second = argv[2];
    TimedApplication application(argc, argv);
    dress(Appearance::light);
    if (isShowing) return showOnce(application, second);
    bool holds = testStart(argv[0], first);
    holds &= testApplications(application, first);
    holds &= testLeftovers(application, second);
    return holds ? 0 : 1;
}

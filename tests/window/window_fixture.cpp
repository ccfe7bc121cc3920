#include "window/window_fixture.h"

#include "app/style/metrics.h"
#include "base/texts.h"
#include "inventory/home_grid_model.h"
#include "program/resources.h"

#include "app/models/find_row.h"
#include "sample/sample_volume.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

namespace tidwen::test {

bool waitUntil(const std::function<bool()>& done) {
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(30'000);
    while (!done() && limit.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

void pause() {
    QTest::qWait(600);
}

namespace {

QModelIndex rowBelow(const QAbstractItemModel& model, const QModelIndex& above, const QString& words) {
    for (int row = 0; row < model.rowCount(above); ++row) {
        const auto index = model.index(row, 0, above);
        const auto shown = index.data().toString().remove(QChar(0x2068)).remove(QChar(0x2069)); // mirrored
        if (shown == words) return index;
        if (const auto below = rowBelow(model, index, words); below.isValid()) return below;
    }
    return {};
}

std::vector<std::string> nameless(QAccessibleInterface* item) {
    std::vector<std::string> found;
    const auto state = item->state();
    if (state.invisible) return found;
    const auto role = item->role();
    const bool needsName = (state.focusable && role != QAccessible::Client) || role == QAccessible::ListItem
                           || role == QAccessible::TreeItem || role == QAccessible::Button;
    if (needsName && item->text(QAccessible::Name).isEmpty())
        found.push_back(item->object() ? item->object()->metaObject()->className() : "a row");
    for (int i = 0; i < item->childCount(); ++i)
        if (auto* child = item->child(i)) {
            auto below = nameless(child);
            found.insert(found.end(), below.begin(), below.end());
        }
    return found;
}

} // namespace

std::vector<std::string> nameless(QWidget& window) {
    return nameless(QAccessible::queryAccessibleInterface(&window));
}

QString spoken(const QModelIndex& row) {
    return row.data(Qt::AccessibleTextRole).toString();
}

WindowFixture::WindowFixture(const std::filesystem::path& resources)
    : texts(Texts::load(resources, "en")),
      host({"tidwen"}, log),
      opener(host, texts, log, main, background),
      own(host, log, main, {"1.0", {}, {}}, availableLanguages(resources)),
      language(texts, resources, own.settings().preferences().language),
      window({opener, language, main, background, own}) {
    window.resize(scaled(1080), scaled(720)); // also where the screen of the platform is smaller
    window.show();
}

void WindowFixture::speak(const std::string& tag) {
    own.settings().set("language", tag);
    for (int i = 0; i < 3; ++i) // made anew, laid out, painted
        QCoreApplication::processEvents();
}

bool WindowFixture::hasFocus() {
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

bool WindowFixture::openSample() {
    const auto volume = folder.path() / "Sample";
    if (!std::filesystem::exists(volume) && !writeSampleVolume(volume)) return false;
    window.open(volume);
    return isReady();
}

bool WindowFixture::isReady() {
    return waitUntil([this] {
        return window.mac() && window.mac()->chores().isDone()
               && window.mac()->session().models().homeGrid().phase.get() == HomeGridModel::Phase::ready;
    });
}

bool WindowFixture::review(const std::string& name) {
    auto* cards = find<QAbstractItemView>("applications");
    const auto index = rowCalled(*cards, QString::fromStdString(name));
    if (!index.isValid()) return false;
    cards->setFocus();
    cards->setCurrentIndex(index);
    QTest::keyClick(cards, Qt::Key_Return);
    return waitUntil([this] { return std::holds_alternative<stage::Review>(flow().stage()); });
}

bool WindowFixture::sweep() {
    window.view()->go(Place::leftovers);
    auto* found = find<QAbstractItemView>("leftovers");
    return click("empty action") && waitUntil([&] {
               return std::holds_alternative<stage::Orphans>(flow().stage()) && found->isVisible();
           });
}

bool WindowFixture::openPermissionsOfTheReview() {
    auto* found = find<QAbstractItemView>("review");
    const auto* rows = found->model();
    for (const auto& row : rows->match(rows->index(0, 0), FindRow::icon, QStringLiteral("lock"), -1,
                                       Qt::MatchExactly | Qt::MatchRecursive)) {
        found->setCurrentIndex(row);
        QCoreApplication::processEvents(); // the details are laid out
        if (click("permissions of the find")) return true;
    }
    return false;
}

bool WindowFixture::says(const QString& words) {
    const auto labels = window.findChildren<QLabel*>();
    return std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
        return label->isVisible() && label->text().contains(words);
    });
}

bool WindowFixture::removeWhatIsChosen() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // of an earlier question
    return click("remove") && waitUntil([this] {
               return find<QAbstractButton>("confirm") != nullptr;
           }) // sizes may come first
           && click("confirm")
           && waitUntil([this] { return std::holds_alternative<stage::Report>(flow().stage()); });
}

bool WindowFixture::click(const char* name) {
    for (auto* button : window.findChildren<QAbstractButton*>(QString::fromLatin1(name))) {
        if (!button->isVisible() || !button->isEnabled()) continue;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest); // of a sheet that has just opened
        QTest::mouseClick(button, Qt::LeftButton);
        return true;
    }
    return false;
}

bool WindowFixture::drop(const std::vector<std::string>& names) {
    QList<QUrl> urls;
    for (const auto& name : names)
        urls << QUrl::fromLocalFile(QString::fromStdString(at(name).string()));
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(400, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &enter);
    const bool isVeiled = find<QWidget>("drop veil")->isVisible();
    QDropEvent event(QPointF(400, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
    return isVeiled;
}

QModelIndex WindowFixture::rowCalled(const QAbstractItemView& view, const QString& words) {
    return rowBelow(*view.model(), {}, words);
}

} // namespace tidwen::test

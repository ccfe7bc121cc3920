#include "window/window_fixture.h"

#include "sample/sample_volume.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

namespace tidwen::test {

bool waitUntil(const std::function<bool()>& done) {
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(30'000);
    while (!done() && limit.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

namespace {

QModelIndex rowBelow(const QAbstractItemModel& model, const QModelIndex& above, const QString& words) {
    for (int row = 0; row < model.rowCount(above); ++row) {
        const auto index = model.index(row, 0, above);
        if (index.data().toString() == words) return index;
        if (const auto below = rowBelow(model, index, words); below.isValid()) return below;
    }
    return {};
}

} // namespace

WindowFixture::WindowFixture()
    : texts(Texts::load(TIDWEN_RESOURCES, "en")),
      host({"tidwen"}, log),
      opener(host, texts, log, main, background),
      window({opener, texts, main, background}) {
    window.show();
}

bool WindowFixture::hasFocus() {
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

bool WindowFixture::openSample() {
    const auto volume = folder.path() / "Sample";
    if (!std::filesystem::exists(volume) && !writeSampleVolume(volume)) return false;
    window.open(volume);
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

bool WindowFixture::removeWhatIsChosen() {
    return click("remove") && click("confirm")
           && waitUntil([this] { return std::holds_alternative<stage::Report>(flow().stage()); });
}

bool WindowFixture::click(const char* name) {
    auto* button = find<QAbstractButton>(name);
    if (!button || !button->isVisible() || !button->isEnabled()) return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

QModelIndex WindowFixture::rowCalled(const QAbstractItemView& view, const QString& words) {
    return rowBelow(*view.model(), {}, words);
}

} // namespace tidwen::test

#include "app/style/appearance.h"

#include "app/style/style.h"

#include <QApplication>
#include <QEvent>
#include <QStyleHints>
#include <string>
#include <utility>
#ifdef __APPLE__
#include "macos/application_appearance.h"
#endif

namespace tidwen {

namespace {

/// The parts of the windows that the system draws.
void showNatively([[maybe_unused]] const std::string& choice) {
#ifdef __APPLE__
    setApplicationAppearance(choice == "light"  ? ShownAppearance::light
                             : choice == "dark" ? ShownAppearance::dark
                                                : ShownAppearance::desktops);
#endif
}

} // namespace

Appearance systemAppearance() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return QGuiApplication::styleHints()->colorScheme() == Qt::ColorScheme::Dark ? Appearance::dark
                                                                                 : Appearance::light;
#else
    const auto ours = QApplication::palette();
    QApplication::setPalette(QPalette()); // the desktop's shows again
    const auto theirs = QApplication::palette();
    const bool isDark =
        theirs.color(QPalette::Window).lightness() < theirs.color(QPalette::WindowText).lightness();
    QApplication::setPalette(ours);
    return isDark ? Appearance::dark : Appearance::light;
#endif
}

AppearanceFollower::AppearanceFollower(Property<std::string>& choice, Asks desktop)
    : choice_(choice),
      desktop_(std::move(desktop)),
      following_(choice.observe([this](const auto&) { apply(); })) {
    qApp->installEventFilter(this);
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this, [this] { apply(); });
#endif
    apply();
}

bool AppearanceFollower::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ThemeChange && !isApplying_) apply();
    return QObject::eventFilter(watched, event);
}

void AppearanceFollower::apply() {
    if (std::exchange(isApplying_, true))
        return; // asking the desktop and changing the palette tell of it again
    const auto& choice = choice_.get();
    showNatively(choice); // first, for the desktop would answer with the choice before
    const auto wanted = choice == "light"  ? Appearance::light
                        : choice == "dark" ? Appearance::dark
                                           : desktop_();
    if (colors().appearance() != wanted) wear(wanted);
    isApplying_ = false;
}

} // namespace tidwen

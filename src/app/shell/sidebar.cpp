#include "app/shell/sidebar.h"

#include "app/shell/sidebar_item.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/words.h"
#include "base/language.h"
#include "program/mac.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMenu>
#include <algorithm>
#include <cstdint>

namespace tidwen {

namespace {

constexpr int wide = 208;
constexpr int widest = 280; ///< for long words
constexpr int narrow = 60;

} // namespace

Sidebar::Sidebar(const Texts& texts, const Mac& mac, QMenu* systems, std::function<void(Place)> go,
                 std::function<void()> openSettings)
    : Panel({.ground = Role::sidebar, .radius = 0, .edges = Qt::RightEdge}),
      texts_(texts),
      go_(std::move(go)) {
    auto* layout = parts::column(this, scaled(2));
    layout->setContentsMargins(scaled(10), scaled(28), scaled(10), scaled(10));
    auto* places = new QWidget;
    places_ = parts::column(places, scaled(2));
    layout->addWidget(new Scrolled(places), 1);
    const auto section = [&](const char* key) {
        auto* label = parts::label(words(texts_, key), Type::section, Role::second);
        label->setContentsMargins(scaled(10), 0, 0, scaled(4));
        places_->addWidget(label);
        wideOnly_.push_back(label);
    };
    section("window.section.clean");
    addPlace(Place::applications, "applications", "window.applications");
    addPlace(Place::leftovers, "leaf", "window.leftovers");
    addPlace(Place::installers, "installers", "installers.title");
    places_->addSpacing(scaled(14));
    section("window.section.manage");
    addPlace(Place::startupItems, "power", "startup.title");
    addPlace(Place::history, "history", "window.history");
    places_->addStretch(1);
    layout->addWidget(makeSystemTile(mac, systems));
    layout->addSpacing(scaled(6));
    settings_ = new SidebarItem(QStringLiteral("gear"), words(texts_, "settings.title"));
    connect(settings_, &QAbstractButton::clicked, this, [open = std::move(openSettings)] { open(); });
    layout->addWidget(settings_);
    setNarrow(false);
}

void Sidebar::addPlace(Place place, const char* icon, const char* key) {
    auto* item = new SidebarItem(QString::fromLatin1(icon), words(texts_, key));
    item->setObjectName(QString::fromLatin1(key));
    item->setCheckable(true);
    connect(item, &QAbstractButton::clicked, this, [this, place] { go_(place); });
    items_[place] = item;
    places_->addWidget(item);
}

QWidget* Sidebar::makeSystemTile(const Mac& mac, QMenu* systems) {
    system_ = new SidebarItem(QStringLiteral("disk"), mac.name);
    system_->setObjectName(QStringLiteral("system"));
    system_->setSecondLine(mac.second);
    connect(system_, &QAbstractButton::clicked, this, [this, systems] {
        systems->popup(system_->mapToGlobal(QPoint(0, -systems->sizeHint().height())));
    });
    return system_;
}

void Sidebar::choose(Place place) {
    for (const auto& [each, item] : items_)
        item->setChecked(each == place);
}

void Sidebar::setCount(Place place, std::size_t count) {
    items_.at(place)->setCount(
        count > 0 ? QString::fromStdString(formatNumber(static_cast<std::int64_t>(count), texts_.language()))
                  : QString());
    setNarrow(isNarrow_); // wider for more figures
}

void Sidebar::warn(const QString& words) {
    system_->warn(words);
}

void Sidebar::setNarrow(bool isNarrow) {
    isNarrow_ = isNarrow;
    for (auto* widget : wideOnly_)
        widget->setVisible(!isNarrow);
    for (const auto& [place, item] : items_)
        item->setNarrow(isNarrow);
    system_->setNarrow(isNarrow);
    settings_->setNarrow(isNarrow);
    int words = 0;
    for (const auto* item : findChildren<SidebarItem*>())
        words = std::max(words, item->sizeHint().width() + 2 * scaled(10));
    setFixedWidth(isNarrow ? scaled(narrow) : std::clamp(words, scaled(wide), scaled(widest)));
}

} // namespace tidwen

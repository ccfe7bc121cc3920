#include "app/screens/applications/applications_screen.h"

#include "app/models/chosen_cards.h"
#include "app/screens/applications/app_details_sheet.h"
#include "app/screens/applications/card_view.h"
#include "app/screens/applications/tags_sheet.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/search_field.h"
#include "app/widgets/words.h"
#include "inventory/home_grid.h"
#include "inventory/home_grid_model.h"
#include "scan/applications/installed_app.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStackedLayout>
#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace tidwen {

namespace {

constexpr qsizetype mostNamedFolders = 4;

} // namespace

ApplicationsScreen::ApplicationsScreen(Models models, Look look,
                                       std::function<void(const InstalledApp&)> showPermissions)
    : models_(models),
      look_(std::move(look)),
      showPermissions_(std::move(showPermissions)),
      list_(models.grid, models.texts, models.clock) {
    auto* body = new QWidget;
    auto* layout = parts::column(body);
    layout->addWidget(makeHeader());
    notices_ = parts::column(nullptr, scaled(6));
    notices_->setContentsMargins(scaled(24), 0, scaled(24), 0);
    layout->addLayout(notices_);
    cards_ = new CardView(models_.icons);
    cards_->setObjectName(QStringLiteral("applications"));
    cards_->setAccessibleName(text("window.applications"));
    cards_->setModel(&list_);
    delete cards_->selectionModel(); // the view's own
    chosen_ = new ChosenCards(list_, models_.grid, this);
    cards_->setSelectionModel(chosen_);
    cards_->setContextMenuPolicy(Qt::CustomContextMenu);
    empty_ = new EmptyState(QStringLiteral("applications"));
    auto* content = parts::row(nullptr);
    content->setContentsMargins(scaled(24), 0, scaled(14), 0);
    content_ = new QStackedLayout;
    content_->addWidget(cards_);
    content_->addWidget(empty_);
    content->addLayout(content_);
    layout->addLayout(content, 1);
    layOut(*this, body, makeFooter());

    connect(cards_, &QAbstractItemView::activated, this, [this](const QModelIndex& index) { lookAt(index); });
    connect(cards_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { showMenuFor(at); });
    connect(cards_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { updateFooter(); });
    connect(&list_, &QAbstractItemModel::rowsRemoved, this, [this] { updateFooter(); });
    connect(&list_, &QAbstractItemModel::dataChanged, this, [this] { updateFooter(); });
    connect(&list_, &QAbstractItemModel::modelReset, this, [this] { updateFooter(); });
    following_.push_back(models_.grid.phase.observe([this](const auto&) { update(); }));
    following_.push_back(models_.grid.inventory.observe([this](const auto&) { update(); }));
    following_.push_back(models_.grid.rows.changed.connect([this](const auto&) { update(); }));
    update();
    updateFooter();
}

QWidget* ApplicationsScreen::makeHeader() {
    header_ = new ScreenHeader(text("window.applications"));
    auto* view = new QPushButton(text("applications.view"));
    view->setMenu(makeViewMenu());
    auto* filter = new QPushButton(text("applications.filter"));
    filter->setMenu(makeFilterMenu());
    search_ = searchField(text("orphans.search.placeholder"));
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& query) {
        setOption([&](HomeGridOptions& options) { options.query = query.toStdString(); });
    });
    for (QWidget* control :
         {static_cast<QWidget*>(view), static_cast<QWidget*>(filter), static_cast<QWidget*>(search_)})
        header_->addControl(control);
    return header_;
}

QWidget* ApplicationsScreen::makeFooter() {
    auto* footer = footerPanel();
    count_ = parts::label({}, Type::strong);
    sizes_ = parts::label({}, Type::second, Role::second);
    protect_ = parts::button(text("drop.tile.protect"), [this] { setProtected(protects_); });
    primary_ = parts::primaryButton({}, [this] { lookAtChosen(); });
    primary_->setObjectName(QStringLiteral("look"));
    auto* layout = footer->layout();
    layout->addWidget(count_);
    layout->addWidget(sizes_);
    static_cast<QBoxLayout*>(layout)->addStretch(1);
    editTags_ = parts::button(text("details.editTags"), [this] { editTags(); });
    layout->addWidget(protect_);
    layout->addWidget(editTags_);
    layout->addWidget(primary_);
    return footer;
}

void ApplicationsScreen::addChoice(QMenu& menu, const char* key, bool isOn, std::function<void()> choose) {
    auto* action = menu.addAction(text(key));
    action->setCheckable(true);
    action->setChecked(isOn);
    connect(action, &QAction::triggered, this, [choose = std::move(choose)] { choose(); });
}

QMenu* ApplicationsScreen::makeViewMenu() {
    auto* menu = new QMenu(this);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        menu->clear();
        menu->addSection(text("applications.group"));
        const auto& preferences = models_.preferences;
        constexpr std::array<std::pair<const char*, const char*>, 4> groupings = {
            {{"lastUsed", "applications.group.lastUsed"},
             {"category", "applications.group.category"},
             {"tag", "applications.group.tag"},
             {"none", "applications.group.none"}}};
        for (const auto& [raw, key] : groupings)
            addChoice(*menu, key, preferences.homeGrouping.get() == raw,
                      [this, raw = raw] { models_.preferences.homeGrouping.set(raw); });
        menu->addSection(text("orphans.filter.sort"));
        constexpr std::array<std::pair<const char*, const char*>, 4> sorts = {
            {{"auto", "applications.sort.automatic"},
             {"name", "cli.apps.name"},
             {"size", "cli.apps.size"},
             {"lastUsed", "cli.apps.lastUsed"}}};
        for (const auto& [raw, key] : sorts)
            addChoice(*menu, key, preferences.homeSort.get() == raw,
                      [this, raw = raw] { models_.preferences.homeSort.set(raw); });
    });
    return menu;
}

QMenu* ApplicationsScreen::makeFilterMenu() {
    auto* menu = new QMenu(this);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        menu->clear();
        const auto& options = models_.grid.options();
        const auto addSwitch = [&](const char* key, bool HomeGridOptions::*option) {
            addChoice(*menu, key, options.*option, [this, option] {
                setOption([&](HomeGridOptions& changed) { changed.*option = !(changed.*option); });
            });
        };
        addSwitch("applications.filter.background", &HomeGridOptions::showsBackgroundAgents);
        addSwitch("applications.filter.unused", &HomeGridOptions::onlyUnused);
        addSwitch("applications.filter.protected", &HomeGridOptions::onlyProtected);
        addTagChoices(*menu);
    });
    return menu;
}

void ApplicationsScreen::addTagChoices(QMenu& menu) {
    const auto tags = models_.tags.all();
    if (tags.empty()) return;
    menu.addSection(text("details.tags"));
    for (const auto& tag : tags) {
        const bool isOn = models_.grid.options().tag == tag;
        auto* action = menu.addAction(shown(tag).replace(QLatin1Char('&'), QStringLiteral("&&")));
        action->setCheckable(true);
        action->setChecked(isOn);
        connect(action, &QAction::triggered, this, [this, tag, isOn] {
            setOption(
                [&](HomeGridOptions& changed) { changed.tag = isOn ? std::nullopt : std::optional(tag); });
        });
    }
}

void ApplicationsScreen::setOption(const std::function<void(HomeGridOptions&)>& change) {
    auto options = models_.grid.options();
    change(options);
    models_.grid.setOptions(std::move(options));
}

void ApplicationsScreen::showMenuFor(const QPoint& point) {
    const auto index = cards_->indexAt(point);
    if (!index.isValid()) return;
    if (!cards_->selectionModel()->isSelected(index))
        cards_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(primary_->text()), &QAction::triggered, this, [this] { lookAtChosen(); });
    connect(menu->addAction(text("review.resetButton")), &QAction::triggered, this,
            [this] { lookAtChosen(RemovalMode::reset); });
    if (const auto apps = chosen(); apps.size() == 1)
        connect(menu->addAction(text("permissions.show")), &QAction::triggered, this,
                [this, app = *apps.front()] { showPermissions_(app); });
    connect(menu->addAction(protect_->text()), &QAction::triggered, this,
            [this, areToBe = protects_] { setProtected(areToBe); });
    connect(menu->addAction(text("details.editTags")), &QAction::triggered, this, [this] { editTags(); });
    menu->addSeparator();
    connect(menu->addAction(text("details.show")), &QAction::triggered, this, [this] { showDetails(); });
    if (const auto& row = list_.row(index); row.app)
        connect(menu->addAction(text("history.revealButton")), &QAction::triggered, this,
                [this, bundle = row.app->url] { models_.reveal(bundle); });
    menu->popup(cards_->viewport()->mapToGlobal(point));
}

std::vector<SharedApp> ApplicationsScreen::chosen() const {
    return chosen_->choice().apps;
}

bool ApplicationsScreen::areProtected(const std::vector<SharedApp>& apps) const {
    return !apps.empty() && std::ranges::all_of(apps, [this](const SharedApp& app) {
        return models_.protectedApps.contains(app->bundleID);
    });
}

/// At what is chosen, and at this one, which the focus makes current without choosing it.
void ApplicationsScreen::lookAt(const QModelIndex& index) {
    if (!index.isValid()) return;
    if (!cards_->selectionModel()->isSelected(index))
        cards_->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
    lookAtChosen();
}

void ApplicationsScreen::lookAtChosen(RemovalMode mode) {
    std::vector<Path> bundles;
    const auto apps = chosen();
    bundles.reserve(apps.size());
    for (const auto& app : apps)
        bundles.push_back(app->url);
    if (!bundles.empty()) look_(bundles, mode);
}

void ApplicationsScreen::setProtected(bool areToBe) {
    std::vector<std::string> identifiers;
    const auto apps = chosen();
    identifiers.reserve(apps.size());
    for (const auto& app : apps)
        if (models_.protectedApps.contains(app->bundleID) != areToBe) identifiers.push_back(app->bundleID);
    if (!models_.protectedApps.set(identifiers, areToBe)) {
        const auto problem = models_.protectedApps.problem();
        models_.say(problem ? shown(models_.texts.text(*problem)) : text("settings.store.failed"));
    }
    updateFooter();
}

void ApplicationsScreen::editTags() {
    std::vector<std::string> identifiers;
    const auto apps = chosen();
    if (apps.empty()) return;
    identifiers.reserve(apps.size());
    for (const auto& app : apps)
        identifiers.push_back(app->bundleID);
    const auto subject = apps.size() == 1 ? shown(apps.front()->name)
                                          : text("report.subject.apps %lld", {std::to_string(apps.size())});
    openTagsSheet(window(), models_.tags, identifiers, subject, models_.texts);
}

void ApplicationsScreen::showDetails() {
    const auto index = cards_->currentIndex();
    if (!index.isValid()) return;
    const auto& row = list_.row(index);
    if (!row.app) return;
    cards_->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
    openAppDetails(window(), row, models_.icons, models_.texts, models_.clock.now(),
                   {.toggleProtection = [this, areToBe = !row.isProtected] { setProtected(areToBe); },
                    .editTags = [this] { editTags(); },
                    .showPermissions = [this, app = *row.app] { showPermissions_(app); },
                    .reveal = [this, bundle = row.app->url] { models_.reveal(bundle); }});
}

void ApplicationsScreen::search() {
    search_->setFocus();
    search_->selectAll();
}

void ApplicationsScreen::startAfresh() {
    search_->clear();
    chosen_->forget();
    cards_->setCurrentIndex({}); // told the view, which otherwise makes one current with the focus
    updateFooter();
}

void ApplicationsScreen::focusInEvent(QFocusEvent* /*event*/) {
    content_->currentWidget()->setFocus();
}

void ApplicationsScreen::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier) return showDetails();
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (search_->hasFocus() && isReturn) {
        cards_->setFocus(Qt::TabFocusReason);
        if (models_.grid.rows.rows().size() == 2) lookAt(cards_->currentIndex()); // a heading and one card
        return;
    }
    if (leaveDown(*search_, *cards_, *event)) return;
    if (!typeInto(*search_, *event)) QWidget::keyPressEvent(event);
}

void ApplicationsScreen::update() {
    using Phase = HomeGridModel::Phase;
    const auto phase = models_.grid.phase.get();
    const auto& inventory = models_.grid.inventory.get();
    const bool isLooking = phase == Phase::listing || phase == Phase::idle;
    const auto all = std::to_string(inventory.count);
    const auto shownNow = countShown();
    const auto size = sizeWords(shownNow.size.bytes, models_.texts).toStdString();
    auto line = shownNow.count == inventory.count ? text("applications.summary %lld %@", {all, size})
                                                  : text("orphans.filter.showing %lld %lld %@",
                                                         {std::to_string(shownNow.count), all, size});
    if (phase == Phase::measuring) line += QStringLiteral(" · ") + text("applications.measuring");
    if (isLooking) line = text("cli.apps.progress");
    if (const auto missed = inventory.unreadable.size(); missed > 0)
        line += QStringLiteral(" · ") + text("applications.unread %lld", {std::to_string(missed)});
    if (inventory.leftOut > 0)
        line += QStringLiteral(" · ") + text("cli.leftOut %lld", {std::to_string(inventory.leftOut)});
    header_->setLine(line);
    showUnread();
    showEmpty();
    parts::turnTo(*content_, *this,
                  models_.grid.rows.rows().empty() ? static_cast<QWidget*>(empty_) : cards_);
}

/// Which folders could not be read, over the applications of the others.
void ApplicationsScreen::showUnread() {
    const auto& unread = models_.grid.inventory.get().unreadable;
    const bool isElsewhere = models_.grid.rows.rows().empty(); // said in the place of the cards
    auto wanted = isElsewhere ? std::vector<Path>() : unread;
    if (wanted == shownUnread_) return;
    shownUnread_ = std::move(wanted);
    parts::clear(*notices_);
    if (shownUnread_.empty()) return;
    QStringList names;
    for (const auto& folder : shownUnread_)
        names << shown(folder.string());
    notices_->addWidget(
        makeNotice(NoticeTone::caution,
                   {text("review.incomplete.title"), firstLines(names, mostNamedFolders, models_.texts),
                    text("leftovers.again")},
                   [this] { models_.grid.load(); }));
}

/// Grouped by tag, one may stand there several times.
HomeGridModel::Inventory ApplicationsScreen::countShown() const {
    const bool mayRepeat = models_.grid.options().grouping == HomeGrouping::tag;
    HomeGridModel::Inventory shown;
    std::unordered_set<std::string_view> bundles;
    for (const auto& row : models_.grid.rows.rows()) {
        if (!row.app || (mayRepeat && !bundles.insert(row.app->url.string()).second)) continue;
        ++shown.count;
        shown.size.add(row.app->sizeBytes, row.app->isSizePartial);
    }
    return shown;
}

/// What stands in the place of the cards.
void ApplicationsScreen::showEmpty() {
    const auto phase = models_.grid.phase.get();
    const auto& inventory = models_.grid.inventory.get();
    const bool isLooking = phase == HomeGridModel::Phase::listing || phase == HomeGridModel::Phase::idle;
    const bool isFiltered = inventory.count > 0;
    empty_->setIcon(isFiltered ? QStringLiteral("search") : QStringLiteral("applications"));
    if (isFiltered)
        empty_->offer(text("orphans.filter.empty.clear"), [this] { clearFilters(); });
    else
        empty_->offer(isLooking ? QString() : text("leftovers.again"), [this] { models_.grid.load(); });
    const auto query = shown(models_.grid.options().query).toStdString();
    if (isFiltered)
        empty_->say(text("orphans.filter.empty.title"), query.empty()
                                                            ? text("orphans.filter.empty.body.filters")
                                                            : text("orphans.filter.empty.body %@", {query}));
    else if (isLooking)
        empty_->say(text("cli.apps.progress"), {});
    else if (!inventory.unreadable.empty())
        empty_->say(text("review.incomplete.title"),
                    text("cli.unreadable %@", {shown(inventory.unreadable.front().string()).toStdString()}));
    else
        empty_->say(text("cli.apps.none"), text("applications.none.body"));
}

void ApplicationsScreen::clearFilters() {
    search_->clear();
    setOption([](HomeGridOptions& options) {
        options.query.clear();
        options.onlyUnused = options.onlyProtected = false;
        options.tag.reset();
    });
}

void ApplicationsScreen::updateFooter() {
    const auto [apps, hidden] = chosen_->choice();
    const bool isAny = !apps.empty();
    std::int64_t bytes = 0;
    for (const auto& app : apps)
        bytes += app->sizeBytes.value_or(0);
    count_->setText(isAny ? text("report.subject.apps %lld", {std::to_string(apps.size())})
                          : text("applications.drop.hint"));
    count_->setFont(textFont(isAny ? Type::strong : Type::body));
    QStringList more;
    if (isAny) more << text("applications.chosen.size %@", {sizeWords(bytes, models_.texts).toStdString()});
    if (hidden > 0) more << text("list.chosen.hidden %lld", {std::to_string(hidden)});
    sizes_->setText(more.join(QStringLiteral(" · ")));
    protects_ = !areProtected(apps);
    protect_->setText(text(protects_ ? "drop.tile.protect" : "drop.tile.unprotect"));
    protect_->setVisible(isAny);
    editTags_->setVisible(isAny);
    primary_->setText(text(apps.size() > 1 ? "applications.look.several" : "applications.look"));
    primary_->setVisible(isAny);
}

QString ApplicationsScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(models_.texts, key, arguments);
}

} // namespace tidwen

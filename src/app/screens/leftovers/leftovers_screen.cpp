#include "app/screens/leftovers/leftovers_screen.h"

#include "app/widgets/choice_button.h"
#include "app/widgets/details_pane.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/find_view.h"
#include "app/widgets/notice.h"
#include "app/widgets/parts.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/search_field.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedLayout>
#include <algorithm>

namespace tidwen {

namespace {

constexpr std::size_t mostReasons = 4; ///< why something may be missing; one more says that there are more

} // namespace

LeftoversScreen::LeftoversScreen(RemovalFlowModel& flow, const Texts& texts, const UserEnvironment& user,
                                 Actions actions)
    : flow_(flow), texts_(texts), actions_(std::move(actions)), tree_(flow, texts, user) {
    auto* layout = parts::column(this);
    layout->addWidget(makeHeader());
    notices_ = parts::column(nullptr, scaled(6));
    notices_->setContentsMargins(scaled(24), 0, scaled(24), scaled(8));
    layout->addLayout(notices_);
    layout->addWidget(makeContent(user), 1);
    layout->addWidget(footer_ = makeFooter());
    following_ = flow_.sweep().changed.connect([this] { update(); });
    update();
}

QWidget* LeftoversScreen::makeHeader() {
    header_ = new ScreenHeader(text("window.leftovers"));
    addMenus();
    search_ = searchField(text("orphans.search.placeholder"));
    search_->setFixedWidth(scaled(140));
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& query) {
        setFilter([&](LeftoverFilter& filter) { filter.query = query.toStdString(); });
    });
    header_->addControl(search_);
    return header_;
}

void LeftoversScreen::addMenus() {
    const auto add = [this](const char* key, std::function<std::vector<ChoiceButton::Choice>()> choices) {
        auto* menu = menus_.emplace_back(new ChoiceButton(text(key), std::move(choices)));
        menu->setObjectName(QString::fromLatin1(key));
        header_->addControl(menu);
    };
    const auto choice = [this](const QString& title, auto LeftoverFilter::*option, auto value) {
        return ChoiceButton::Choice{title, flow_.sweep().filter().*option == value, [this, option, value] {
                                        setFilter([&](LeftoverFilter& filter) { filter.*option = value; });
                                    }};
    };
    add("orphans.filter.kind", [this, choice] {
        using Kind = std::optional<TraceCategory>;
        const auto& snapshot = flow_.sweep().snapshot();
        std::vector choices = {choice(text("orphans.filter.kind.all"), &LeftoverFilter::category, Kind())};
        for (const auto category : allTraceCategories) {
            const auto count = snapshot.categoryCounts[static_cast<std::size_t>(category)];
            if (count == 0 && flow_.sweep().filter().category != category) continue;
            const auto title = texts_.text("category." + std::string(name(category)));
            choices.push_back(
                choice(text("orphans.filter.kind.option %@ %lld", {title, std::to_string(count)}),
                       &LeftoverFilter::category, Kind(category)));
        }
        return choices;
    });
    add("orphans.filter.size", [this, choice] {
        std::vector<ChoiceButton::Choice> choices;
        choices.reserve(allSizeFloors.size());
        for (const auto floor : allSizeFloors)
            choices.push_back(choice(floor == LeftoverFilter::SizeFloor::any
                                         ? text("orphans.filter.size.any")
                                         : text("orphans.filter.size.over %@",
                                                {sizeWords(minimumBytes(floor), texts_).toStdString()}),
                                     &LeftoverFilter::floor, floor));
        return choices;
    });
    add("orphans.filter.sort", [this, choice] {
        using Order = LeftoverFilter::Order;
        return std::vector{
            choice(text("orphans.filter.sort.largest"), &LeftoverFilter::order, Order::largest),
            choice(text("orphans.filter.sort.name"), &LeftoverFilter::order, Order::name)};
    });
}

QWidget* LeftoversScreen::makeContent(const UserEnvironment& user) {
    view_ = new FindView;
    view_->setObjectName(QStringLiteral("leftovers"));
    view_->setAccessibleName(text("window.leftovers"));
    view_->setModel(&tree_);
    details_ = new DetailsPane(texts_, user, actions_.reveal, "orphans.risk.");
    details_->hide();
    empty_ = new EmptyState(QStringLiteral("leaf"));
    auto* found = new QWidget;
    auto* beside = parts::row(found);
    auto* list = parts::row(nullptr);
    list->setContentsMargins(scaled(14), 0, scaled(8), 0);
    list->addWidget(view_);
    beside->addLayout(list, 1);
    beside->addWidget(details_);
    auto* content = new QWidget;
    content_ = new QStackedLayout(content);
    content_->addWidget(found);
    content_->addWidget(empty_);
    connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                details_->show(tree_.trace(current));
                details_->setVisible(tree_.trace(current) != nullptr);
            });
    connect(&tree_, &QAbstractItemModel::modelReset, this, [this] {
        view_->expandAll();
        details_->hide();
    });
    connect(&tree_, &QAbstractItemModel::rowsInserted, this, [this](const auto& above, int first, int last) {
        for (int row = first; row <= last && !tree_.trace(tree_.index(first, 0, above)); ++row)
            view_->expand(tree_.index(row, 0, above));
    });
    return content;
}

QWidget* LeftoversScreen::makeFooter() {
    auto* footer = footerPanel();
    auto* layout = static_cast<QBoxLayout*>(footer->layout());
    layout->addWidget(count_ = parts::paragraph({}, Type::strong), 1);
    selectSafe_ = parts::button(text("leftovers.selectSafe"),
                                [this] { flow_.setSelected(tree_.idsOf(TraceRisk::safe), true); });
    selectSafe_->setObjectName(QStringLiteral("select safe"));
    remove_ = parts::primaryButton(text("installers.removeButton"), [this] { actions_.remove(); });
    remove_->setObjectName(QStringLiteral("remove"));
    layout->addWidget(selectSafe_);
    layout->addWidget(remove_);
    return footer;
}

void LeftoversScreen::setFilter(const std::function<void(LeftoverFilter&)>& change) {
    auto filter = flow_.sweep().filter();
    change(filter);
    flow_.sweep().setFilter(std::move(filter));
    for (auto* menu : menus_)
        menu->refresh();
}

const OrphanScanResult* LeftoversScreen::result() const {
    const auto* orphans = std::get_if<stage::Orphans>(&flow_.stage());
    const auto& list = flow_.sweep().snapshot().tree.list;
    const bool isShown = orphans && list && list->traces() == flow_.sweep().traces();
    return isShown ? orphans->result.get() : nullptr;
}

void LeftoversScreen::update() {
    const auto* found = result();
    if (std::exchange(shown_, found) != found) {
        parts::clear(*notices_);
        if (found) showNotices(*found);
        if (found) view_->setFocus();
    }
    tree_.refresh();
    showContent();
    showFooter();
}

/// Why something may be missing here.
void LeftoversScreen::showNotices(const OrphanScanResult& result) {
    if (result.isComplete()) return;
    QStringList reasons;
    for (const auto& gap : result.gaps)
        reasons << shown(texts_.text(gap.describe()));
    for (const auto& place : result.unreadableLocations)
        reasons << text("cli.unreadable %@", {shown(place.string()).toStdString()});
    for (const auto& item : result.skippedNames)
        reasons << text("cli.skippedName %@", {shown(item.string()).toStdString()});
    if (result.leftOut > 0) reasons << text("cli.leftOut %lld", {std::to_string(result.leftOut)});
    if (static_cast<std::size_t>(reasons.size()) > mostReasons)
        reasons = reasons.mid(0, mostReasons) << QStringLiteral("…");
    notices_->addWidget(makeNotice(
        NoticeTone::caution,
        {text("review.incomplete.title"), reasons.join(QLatin1Char('\n')), text("review.incomplete.rescan")},
        [this] { actions_.sweep(); }));
}

void LeftoversScreen::showContent() {
    const bool hasResult = result() != nullptr;
    const auto& tree = flow_.sweep().snapshot().tree;
    const auto summary = summarize(tree);
    header_->setLine(
        hasResult ? text("leftovers.line %lld %lld %@",
                         {std::to_string(summary.shown), std::to_string(summary.total), summary.sizeText})
                  : text("leftovers.line.before"));
    for (QWidget* control : menus_)
        control->setVisible(hasResult && summary.total > 0);
    search_->setVisible(hasResult && summary.total > 0);
    footer_->setVisible(hasResult && summary.total > 0);
    if (!hasResult || summary.shown == 0) showEmpty();
    content_->setCurrentIndex(hasResult && summary.shown > 0 ? 0 : 1);
}

void LeftoversScreen::showEmpty() {
    const auto* found = result();
    const bool isFiltered = found && flow_.sweep().filter().isActive();
    if (isFiltered && summarize(flow_.sweep().snapshot().tree).total > 0) {
        const auto& query = flow_.sweep().filter().query;
        empty_->setIcon(QStringLiteral("search"));
        empty_->say(text("orphans.filter.empty.title"),
                    query.empty() ? text("orphans.filter.empty.body.filters")
                                  : text("orphans.filter.empty.body %@", {shown(query).toStdString()}));
        return empty_->offer(text("orphans.filter.empty.clear"), [this] {
            search_->clear();
            setFilter([](LeftoverFilter& filter) { filter = {.order = filter.order}; });
        });
    }
    const bool isUnsure = found && !found->isComplete();
    empty_->setIcon(found && !isUnsure ? QStringLiteral("check") : QStringLiteral("leaf"));
    if (!found)
        empty_->say(text("leftovers.before.title"), text("leftovers.before.body"));
    else
        empty_->say(text(isUnsure ? "leftovers.undecided.title" : "leftovers.none.title"),
                    text(isUnsure ? "cli.orphans.undecided" : "cli.orphans.none"));
    empty_->offer(text(found ? "leftovers.again" : "leftovers.sweep"), [this] { actions_.sweep(); });
}

void LeftoversScreen::showFooter() {
    const auto& summary = flow_.choice().summary();
    count_->setFont(textFont(summary.totalCount == 0 ? Type::body : Type::strong));
    count_->setText(summary.totalCount == 0 ? text("list.chosen.none")
                                            : text("list.chosen %lld %@", {std::to_string(summary.totalCount),
                                                                           summary.totalSizeText(texts_)}));
    selectSafe_->setEnabled(!tree_.idsOf(TraceRisk::safe).empty());
    remove_->setEnabled(summary.totalCount > 0);
}

void LeftoversScreen::search() {
    search_->setFocus();
    search_->selectAll();
}

void LeftoversScreen::keyPressEvent(QKeyEvent* event) {
    if (!footer_->isVisible() && event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    if (typeInto(*search_, *event)) return;
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && remove_->isEnabled() && !search_->hasFocus()) return actions_.remove();
    QWidget::keyPressEvent(event);
}

QString LeftoversScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

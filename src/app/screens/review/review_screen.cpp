#include "app/screens/review/review_screen.h"

#include "app/models/app_icons.h"
#include "app/models/trace_words.h"
#include "app/models/unseen_words.h"
#include "app/screens/review/review_filter.h"
#include "app/screens/review/size_bar.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/details_pane.h"
#include "app/widgets/find_delegate.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/row_view.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/search_field.h"
#include "app/widgets/text_sheet.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "operations/removal_operation.h"
#include "platform/user_environment.h"
#include "removal/findings.h"
#include "removal/removal_choice.h"
#include "removal/removal_flow_model.h"
#include "removal/stay_reason.h"
#include "removal/target_intake.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/leftover_tree.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t mostTiles = 3;    ///< of several applications
constexpr std::size_t namedReasons = 2; ///< for which items stay
constexpr qsizetype namedPlaces = 3;    ///< that could not be read
constexpr std::size_t namedParts = 3;   ///< of the size bar; the others are one

} // namespace

ReviewScreen::ReviewScreen(RemovalFlowModel& flow, AppIcons& icons, const Texts& texts, UserEnvironment user,
                           Actions actions)
    : flow_(flow), icons_(icons), texts_(texts), actions_(std::move(actions)), tree_(flow, texts, user) {
    auto* layout = parts::row(this);
    auto* body = new QWidget;
    auto* main = parts::column(body);
    main->addWidget(makeHeader());
    sizes_ = new SizeBar;
    auto* inner = parts::column(nullptr, scaled(8));
    inner->setContentsMargins(scaled(24), 0, scaled(24), scaled(8));
    inner->addWidget(sizes_);
    notices_ = parts::column(nullptr, scaled(6));
    inner->addLayout(notices_);
    main->addLayout(inner);
    view_ = new RowView(new FindDelegate(nullptr));
    setFocusProxy(view_);
    view_->setObjectName(QStringLiteral("review"));
    view_->setAccessibleName(text("window.found"));
    view_->setModel(&tree_);
    auto* list = parts::row(nullptr);
    list->setContentsMargins(scaled(14), 0, scaled(8), 0);
    list->addWidget(view_);
    main->addLayout(list, 1);
    details_ = new DetailsPane(texts_, std::move(user),
                               {.reveal = actions_.reveal,
                                .retention = [this] { return flow_.retention(); },
                                .showPermissions = [this](const Trace& trace) { showPermissions(trace); },
                                .openPane = actions_.openPane});
    auto* beside = new QWidget;
    layOut(*beside, body, makeFooter());
    layout->addWidget(beside, 1);
    layout->addWidget(details_);
    connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { details_->show(tree_.trace(current)); });
}

QWidget* ReviewScreen::makeHeader() {
    header_ = new ScreenHeader({});
    for (std::size_t i = 0; i < mostTiles; ++i) {
        tiles_.push_back(new Tile(44, icons_));
        header_->addLeading(tiles_.back());
    }
    uninstall_ = parts::button(text("review.uninstall"), [this] { flow_.setMode(RemovalMode::uninstall); });
    reset_ = parts::button(text("review.reset"), [this] { flow_.setMode(RemovalMode::reset); });
    reset_->setObjectName(QStringLiteral("reset"));
    auto* modes = new QWidget;
    auto* row = parts::row(modes);
    for (auto* button : {uninstall_, reset_}) {
        button->setCheckable(true);
        row->addWidget(button);
    }
    search_ = searchField(text("orphans.search.placeholder"));
    search_->setFixedWidth(scaled(130));
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& query) {
        auto filter = flow_.reviewFilter();
        filter.query = query.toStdString();
        flow_.setReviewFilter(std::move(filter));
    });
    auto* filter = new QPushButton(controlIcon(QStringLiteral("filter"), Role::text), {});
    filter->setAccessibleName(text("applications.filter"));
    filter->setToolTip(text("applications.filter"));
    filter->setObjectName(QStringLiteral("filter finds"));
    filter->setMenu(reviewFilterMenu(filter, flow_, texts_,
                                     {[this] { return tree_.showsOnlyChosen(); },
                                      [this](bool isOn) {
                                          tree_.showOnlyChosen(isOn);
                                          view_->openAll();
                                      }}));
    header_->addControl(modes);
    header_->addControl(filter);
    header_->addControl(search_);
    return header_;
}

QWidget* ReviewScreen::makeFooter() {
    auto* footer = footerPanel();
    auto* words = parts::column(nullptr);
    going_ = parts::label({}, Type::strong);
    staying_ = parts::paragraph({}, Type::second, Role::second);
    for (auto* label : {going_, staying_})
        words->addWidget(label);
    auto* layout = static_cast<QBoxLayout*>(footer->layout());
    layout->addLayout(words, 1);
    layout->addWidget(details_->makeButton(DetailsPane::Stands::always));
    layout->addWidget(parts::button(text("confirm.cancelButton"), [this] { flow_.close(); }));
    remove_ = parts::primaryButton(text("installers.removeButton"), [this] { actions_.remove(); });
    remove_->setObjectName(QStringLiteral("remove"));
    layout->addWidget(remove_);
    return footer;
}

void ReviewScreen::update() {
    std::vector<std::shared_ptr<const LeftoverList>> lists;
    int rows = 0;
    for (const auto& [identifier, tree] : flow_.reviewTrees()) {
        lists.push_back(tree.list);
        rows += tree.totalCount;
    }
    const bool isOther = lists != shown_;
    if (isOther || rows != shownRows_ || shownFilter_ != flow_.reviewFilter()) {
        shown_ = std::move(lists);
        shownRows_ = rows;
        shownFilter_ = flow_.reviewFilter();
        tree_.rebuild();
        view_->openAll();
        details_->show(nullptr);
        if (isOther) showNotices();
        if (isOther) view_->scrollToTop();
        if (isOther && !shown_.empty()) view_->setFocus();
    }
    if (!shown_.empty())
        showSelection(); // else the findings are those of another screen, and may be very many
}

void ReviewScreen::showGrantedAccess() {
    isAccessNew_ = !shown_.empty();
    if (isAccessNew_) showNotices();
}

void ReviewScreen::showSelection() {
    tree_.refresh();
    showHeader();
    showSizes();
    showFooter();
}

/// Of the application whose reset the trace is.
void ReviewScreen::showPermissions(const Trace& trace) {
    const auto* reset = std::get_if<action::ResetPermissions>(&trace.action);
    for (const auto& group : flow_.choice().findings().groups())
        if (reset && group.target.bundleID == reset->bundleID) return actions_.showPermissions(group.target);
}

void ReviewScreen::showHeader() {
    const auto& choice = flow_.choice();
    const auto& groups = choice.findings().groups();
    if (groups.empty()) return;
    const auto& first = groups.front().target;
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        tiles_[i]->setVisible(i < groups.size());
        if (i >= groups.size()) continue;
        const auto& target = groups[i].target;
        tiles_[i]->show(shown(target.name), target.bundleID, target.bundleURL);
    }
    if (groups.size() == 1) {
        header_->setTitle(shown(first.name));
        const auto version = first.version ? shown(*first.version) + QStringLiteral(" · ") : QString();
        header_->setLine(version + breakable(shown(first.bundleID)));
    } else {
        header_->setTitle(text("report.subject.apps %lld", {std::to_string(groups.size())}));
        const auto name = [](const FoundGroup& group) { return group.target.name; };
        header_->setLine(listed(groups, name, texts_));
    }
    uninstall_->setChecked(choice.mode() == RemovalMode::uninstall);
    reset_->setChecked(choice.mode() == RemovalMode::reset);
}

void ReviewScreen::showNotices() {
    parts::clear(*notices_);
    const auto& unknown = flow_.protectionProblem();
    if (unknown) notices_->addWidget(makeNotice(NoticeTone::caution, {shown(texts_.text(*unknown))}));
    for (const auto& result : flow_.choice().findings().scanned()) {
        if (result.isProtected && !unknown)
            notices_->addWidget(
                makeNotice(NoticeTone::caution,
                           {QString::fromStdString(texts_.text(describeProtected(result.target)))}));
        if (result.immovable)
            notices_->addWidget(
                makeNotice(NoticeTone::caution,
                           {QString::fromStdString(texts_.text(result.immovable->describe(result.target)))}));
        if (result.nameMatchingDisabled)
            notices_->addWidget(
                makeNotice(NoticeTone::caution,
                           {text("review.genericName.title"),
                            text("review.genericName.body %@", {shown(result.target.name).toStdString()})}));
        if (actions_.isRunning(result.target))
            notices_->addWidget(
                makeNotice(NoticeTone::information,
                           {text("review.running.title %@", {shown(result.target.name).toStdString()}),
                            text("review.running.body"),
                            {},
                            QStringLiteral("power")}));
        auto unusable = result.unusableHelpers;
        if (result.identifierMatchingDisabled) unusable.push_back(result.target.bundleID);
        for (const auto& identifier : unusable)
            notices_->addWidget(makeNotice(NoticeTone::caution, {text("review.noIdentifier.title"),
                                                                 text("review.noIdentifier.body %@",
                                                                      {shown(identifier).toStdString()})}));
    }
    for (const auto& each : unseenWords(flow_.choice().findings().unseen(), UnseenAt::review, texts_))
        addUnseen(each);
}

/// The first places by name, all of them in a sheet. With the way to the access that is missing; once it is
/// there, another scan sees more.
void ReviewScreen::addUnseen(const UnseenWords& unseen) {
    std::vector<NoticeAction> actions;
    if (unseen.places.size() > namedPlaces)
        actions.push_back({text("list.showAll"),
                           [this, unseen] {
                               openTextSheet(window(), unseen.title, unseen.places,
                                             text("permissions.doneButton"));
                           },
                           true, QStringLiteral("all places")});
    if (unseen.isUnread && actions_.openPane && !actions_.hasFullDiskAccess())
        actions.push_back(
            {text("settings.permissions.open"), [this] { actions_.openPane(SettingsPane::fullDiskAccess); }});
    actions.push_back({text("review.incomplete.rescan"), [this] { actions_.rescan(); }});
    auto lines = firstLines(unseen.places, namedPlaces, texts_);
    const bool isGranted = unseen.isUnread && isAccessNew_;
    const auto body =
        isGranted ? text("review.incomplete.granted.body %lld", {std::to_string(unseen.places.size())})
                  : unseen.body;
    if (!body.isEmpty()) lines.prepend(body + QLatin1Char('\n'));
    const auto title = isGranted ? text("review.incomplete.granted.title") : unseen.title;
    notices_->addWidget(makeNotice(NoticeTone::caution, {title, lines}, std::move(actions)));
}

/// The largest kinds by name, the others as one.
void ReviewScreen::showSizes() {
    std::map<TraceCategory, std::int64_t> byCategory;
    for (const auto& group : flow_.choice().findings().groups())
        for (const auto& trace : group.traces)
            if (trace.sizeBytes && isEligible(trace, flow_.choice().mode()))
                byCategory[trace.category] += *trace.sizeBytes;
    std::vector<std::pair<TraceCategory, std::int64_t>> sorted(byCategory.begin(), byCategory.end());
    std::ranges::stable_sort(sorted, std::greater{}, [](const auto& part) { return part.second; });
    std::vector<SizeBar::Part> parts;
    parts.reserve(namedParts + 1);
    std::int64_t others = 0;
    const auto picked = flow_.reviewFilter().category;
    for (const auto& [category, bytes] : sorted)
        if (parts.size() == namedParts || bytes == 0)
            others += bytes;
        else
            parts.push_back({words(texts_, "category." + std::string(name(category))),
                             sizeWords(bytes, texts_), bytes,
                             [this, category = category] { toggleCategory(flow_, category); },
                             picked && *picked != category});
    if (others > 0)
        parts.push_back(
            {text("review.bar.others"), sizeWords(others, texts_), others, {}, picked.has_value()});
    sizes_->show(std::move(parts));
}

void ReviewScreen::showFooter() {
    const auto& choice = flow_.choice();
    const auto& summary = choice.summary();
    auto going = text("review.header.summary %lld %@",
                      {std::to_string(summary.totalCount), summary.totalSizeText(texts_)});
    if (const auto hidden = tree_.hiddenChosen(); hidden > 0)
        going += QStringLiteral(" · ") + text("list.chosen.hidden %lld", {std::to_string(hidden)});
    going_->setText(going);
    staying_->setText(whatStays().join(QStringLiteral(" · ")));
    staying_->setVisible(!staying_->text().isEmpty());
    remove_->setText(
        text(choice.mode() == RemovalMode::reset ? "review.resetButton" : "installers.removeButton"));
    remove_->setEnabled(summary.totalCount > 0);
}

/// How many items stay for each reason; the most frequent ones.
QStringList ReviewScreen::whatStays() const {
    std::map<QString, int> counts;
    for (const auto& group : flow_.choice().staying())
        for (const auto& item : group.items)
            ++counts[item.reason == StayReason::contested
                         ? traceBadge(*item.trace, texts_)
                         : shown(texts_.text(StayingTrace{*item.trace, item.reason}.describe()))];
    std::vector<std::pair<QString, int>> sorted(counts.begin(), counts.end());
    std::ranges::stable_sort(sorted, std::greater{}, [](const auto& reason) { return reason.second; });
    if (sorted.size() > namedReasons) sorted.resize(namedReasons);
    QStringList lines;
    for (const auto& [why, count] : sorted)
        lines << text("review.footer.stays %lld %@", {std::to_string(count), why.toStdString()});
    return lines;
}

void ReviewScreen::search() {
    search_->setFocus();
    search_->selectAll();
}

void ReviewScreen::keyPressEvent(QKeyEvent* event) {
    if (typeInto(*search_, *event) || leaveDown(*search_, *view_, *event)) return;
    if (event->key() == Qt::Key_Escape) {
        flow_.close();
        return;
    }
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && remove_->isEnabled() && !search_->hasFocus()) return actions_.remove();
    QWidget::keyPressEvent(event);
}

void ReviewScreen::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    details_->fold();
}

QString ReviewScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

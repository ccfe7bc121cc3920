#include "app/widgets/list_screen.h"

#include "app/style/metrics.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/search_field.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStackedLayout>

namespace tidwen {

namespace {

constexpr int mostReasons = 4; ///< one more line says that there are more

} // namespace

ListScreen::ListScreen(const Texts& texts, const Look& look, std::function<void()> remove)
    : texts_(texts), removeChosen_(std::move(remove)) {
    auto* body = new QWidget;
    auto* layout = parts::column(body);
    header_ = new ScreenHeader(look.title);
    search_ = searchField(text("orphans.search.placeholder"));
    search_->setFixedWidth(scaled(140));
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& query) { searchFor(query); });
    header_->addControl(search_);
    layout->addWidget(header_);
    notices_ = parts::column(nullptr, scaled(6));
    notices_->setContentsMargins(scaled(24), 0, scaled(24), scaled(8));
    layout->addLayout(notices_);
    layout->addWidget(makeContent(look), 1);
    layOut(*this, body, footer_ = makeFooter());
}

QWidget* ListScreen::makeContent(const Look& look) {
    view_ = new RowView(look.delegate);
    view_->setObjectName(QString::fromLatin1(look.listName));
    view_->setAccessibleName(look.title);
    view_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(view_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) { showMenu(at); });
    empty_ = new EmptyState(QString::fromLatin1(look.icon));
    auto* lists = new QWidget;
    lists->setFocusProxy(view_);
    beside_ = parts::row(lists);
    auto* inner = parts::row(nullptr);
    const bool hasCards = look.delegate->hasCards();
    inner->setContentsMargins(scaled(hasCards ? 24 : 14), 0, scaled(hasCards ? 24 : 8), 0);
    inner->addWidget(view_);
    beside_->addLayout(inner, 1);
    auto* content = new QWidget;
    content_ = new QStackedLayout(content);
    content_->addWidget(lists);
    content_->addWidget(empty_);
    return content;
}

QWidget* ListScreen::makeFooter() {
    auto* footer = footerPanel();
    auto* layout = static_cast<QBoxLayout*>(footer->layout());
    layout->addWidget(count_ = parts::paragraph({}, Type::strong), 1);
    remove_ = parts::primaryButton(text("installers.removeButton"), [this] { removeChosen_(); });
    remove_->setObjectName(QStringLiteral("remove"));
    layout->addWidget(remove_);
    return footer;
}

void ListScreen::nameFooter(const char* chosen, const char* remove) {
    count_->setAccessibleDescription(text(chosen));
    remove_->setText(text(remove));
}

void ListScreen::setModel(QAbstractItemModel& model) {
    view_->setModel(&model);
    const auto open = [this](const QModelIndex& above, int first, int last) {
        const auto* rows = view_->model();
        if (rows->index(first, 0, above).flags().testFlag(Qt::ItemNeverHasChildren)) return;
        for (int row = first; row <= last; ++row)
            view_->expand(rows->index(row, 0, above));
    };
    connect(&model, &QAbstractItemModel::rowsInserted, this, open);
    connect(&model, &QAbstractItemModel::modelReset, this, [this] { view_->openAll(); });
    view_->openAll();
}

void ListScreen::addControl(QWidget* control) {
    header_->addControl(control);
    header_->addControl(search_); // again: the layout moves it to the end
    setTabOrder(control, search_);
}

void ListScreen::addBeside(QWidget* widget) {
    beside_->addWidget(widget);
}

void ListScreen::addButton(QWidget* button) {
    auto* layout = static_cast<QBoxLayout*>(footer_->layout());
    layout->insertWidget(layout->count() - 1, button);
}

QPushButton* ListScreen::addButton(const char* key, const char* name, std::function<void()> act) {
    auto* button = parts::button(text(key), std::move(act));
    button->setObjectName(QString::fromLatin1(name));
    addButton(button);
    return button;
}

void ListScreen::showReasons(const QString& title, QStringList reasons, const Remedy& remedy) {
    parts::clear(*notices_);
    if (reasons.isEmpty()) return;
    if (reasons.size() > mostReasons) reasons = reasons.mid(0, mostReasons) << QStringLiteral("…");
    notices_->addWidget(
        makeNotice(NoticeTone::caution, {title, reasons.join(QLatin1Char('\n')), remedy.words}, remedy.act));
}

void ListScreen::showList(bool isShown) {
    parts::turnTo(*content_, *this, content_->widget(isShown ? 0 : 1));
}

void ListScreen::setUsable(bool isUsable) {
    isUsable_ = isUsable;
    search_->setVisible(isUsable);
    footer_->setVisible(isUsable);
}

std::size_t ListScreen::countTicked() const {
    const auto* rows = view_->model();
    return static_cast<std::size_t>(rows->match(rows->index(0, 0), Qt::CheckStateRole, Qt::Checked, -1,
                                                Qt::MatchExactly | Qt::MatchRecursive)
                                        .size());
}

void ListScreen::showChosen(std::size_t count, const QString& size, std::size_t hidden) {
    const auto number = std::to_string(count);
    count_->setFont(textFont(count == 0 ? Type::body : Type::strong));
    auto line = count == 0       ? text("list.chosen.none")
                : size.isEmpty() ? text("list.chosen %lld", {number})
                                 : text("list.chosen %lld %@", {number, size.toStdString()});
    if (hidden > 0) line += QStringLiteral(" · ") + text("list.chosen.hidden %lld", {std::to_string(hidden)});
    count_->setText(line);
    remove_->setEnabled(count > 0);
}

void ListScreen::search() {
    if (!isUsable_) return;
    search_->setFocus();
    search_->selectAll();
}

void ListScreen::forgetSearch() {
    search_->clear();
}

void ListScreen::showMenu(const QPoint& at) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fill(*menu);
    if (menu->isEmpty()) return menu->deleteLater();
    menu->popup(view_->viewport()->mapToGlobal(at));
}

void ListScreen::showNoMatch(const std::function<void()>& clearFilters) {
    const auto query = shown(search_->text().toStdString());
    empty_->setIcon(QStringLiteral("search"));
    empty_->say(text("orphans.filter.empty.title"),
                query.isEmpty() ? text("orphans.filter.empty.body.filters")
                                : text("orphans.filter.empty.body %@", {query.toStdString()}));
    empty_->offer(text("orphans.filter.empty.clear"), [this, clearFilters] {
        search_->clear();
        if (clearFilters) clearFilters();
    });
}

void ListScreen::keyPressEvent(QKeyEvent* event) {
    if (isUsable_ && (typeInto(*search_, *event) || leaveDown(*search_, *view_, *event))) return;
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && isUsable_ && remove_->isEnabled() && !search_->hasFocus()) return removeChosen_();
    QWidget::keyPressEvent(event);
}

void ListScreen::focusInEvent(QFocusEvent* /*event*/) {
    content_->currentWidget()->setFocus();
}

QString ListScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

#include "app/screens/history/history_screen.h"

#include "app/models/app_icons.h"
#include "app/models/trace_words.h"
#include "app/models/undo_words.h"
#include "app/screens/history/history_delegate.h"
#include "app/screens/history/history_item_delegate.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/search_field.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QStackedLayout>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

HistoryScreen::HistoryScreen(HistoryModel& history, AppIcons& icons, const Texts& texts, UserEnvironment user,
                             bool runsJobs, Actions actions)
    : history_(history),
      texts_(texts),
      user_(std::move(user)),
      runsJobs_(runsJobs),
      actions_(std::move(actions)),
      list_(history, texts),
      itemList_(texts, user_) {
    auto* body = new QWidget;
    auto* layout = parts::column(body);
    header_ = new ScreenHeader(text("window.history"));
    search_ = searchField(text("orphans.search.placeholder"));
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& query) { list_.setQuery(query); });
    header_->addControl(search_);
    deleteAll_ = parts::button(text("history.deleteAllButton"), [this] { askToDeleteAll(); });
    deleteAll_->setObjectName(QStringLiteral("delete all"));
    header_->addControl(deleteAll_);
    layout->addWidget(header_);
    notices_ = parts::column(nullptr, scaled(6));
    notices_->setContentsMargins(scaled(24), 0, scaled(24), scaled(6));
    layout->addLayout(notices_);
    layout->addWidget(makeContent(icons), 1);
    layOut(*this, body, makeFooter());
    connect(runs_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        const auto* entry = current();
        if (entry && isVisible()) currentRoot_ = entry->root;
        if (!entry || entry->root != partlyUndone_) partlyUndone_ = Path();
        showItems();
    });
    connect(&list_, &QAbstractItemModel::modelReset, this, [this] { update(); });
    const auto follow = [this](auto& property) {
        following_.push_back(property.observe([this](const auto&) { update(); }));
    };
    following_.push_back(icons.arrived.connect([this](const Path&) { runs_->viewport()->update(); }));
    follow(history_.isLoading);
    follow(history_.leftOut);
    follow(history_.isAnotherAtWork);
    again_.setSingleShot(true);
    connect(&again_, &QTimer::timeout, this, [this] { history_.load(); });
    follow(history_.unfinishedRuns);
    follow(history_.unreadable);
    follow(history_.busyEntryID);
    following_.push_back(history_.progress.observe([this](const auto&) { showLine(); }));
    follow(history_.lastUndo);
    follow(history_.error);
    update();
}

QWidget* HistoryScreen::makeContent(AppIcons& icons) {
    runs_ = new QListView;
    setFocusProxy(runs_);
    runs_->setObjectName(QStringLiteral("runs"));
    runs_->setAccessibleName(text("window.history"));
    runs_->setItemDelegate(new HistoryDelegate(icons, runs_));
    runs_->setModel(&list_);
    items_ = new QListView;
    items_->setAccessibleName(text("history.items"));
    items_->setObjectName(QStringLiteral("items"));
    items_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    items_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    items_->setUniformItemSizes(true);
    items_->setSpacing(scaled(1));
    items_->setMouseTracking(true);
    items_->setItemDelegate(new HistoryItemDelegate(items_));
    items_->setModel(&itemList_);
    // On the run itself: the whole of it.
    connect(runs_, &QAbstractItemView::clicked, this, [this] { items_->clearSelection(); });
    connect(items_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { updateFooter(); });
    for (auto* view : {runs_, items_}) {
        view->setFrameShape(QFrame::NoFrame);
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
        view->installEventFilter(this);
    }
    runs_->viewport()->setAutoFillBackground(false);
    empty_ = new EmptyState(QStringLiteral("history"));
    auto* lists = new QWidget;
    auto* row = parts::row(lists, scaled(14));
    row->addWidget(runs_, 3);
    auto* card = new Panel({});
    auto* inner = parts::column(card, scaled(6));
    inner->setContentsMargins(scaled(14), scaled(12), scaled(8), scaled(12));
    inner->addWidget(parts::label(text("history.items"), Type::section, Role::second));
    state_ = parts::paragraph({}, Type::second, Role::look);
    inner->addWidget(state_);
    inner->addWidget(items_);
    row->addWidget(card, 2);
    auto* content = new QWidget;
    auto* outer = parts::row(content);
    outer->setContentsMargins(scaled(24), 0, scaled(24), scaled(12));
    content_ = new QStackedLayout;
    content_->addWidget(lists);
    content_->addWidget(empty_);
    outer->addLayout(content_);
    return content;
}

QWidget* HistoryScreen::makeFooter() {
    auto* footer = footerPanel();
    auto* layout = static_cast<QBoxLayout*>(footer->layout());
    delete_ = parts::button(text("history.deleteButton"), [this] { askToDelete(); });
    show_ = parts::button(text("history.revealButton"), [this] {
        if (const auto* entry = current()) actions_.reveal(entry->root);
    });
    undo_ = parts::primaryButton(text("history.undoButton"), [this] { undo(); });
    undo_->setObjectName(QStringLiteral("undo run"));
    undo_->setToolTip(text("history.action.undo"));
    delete_->setToolTip(text("history.action.delete"));
    stop_ = parts::button(text("removing.stop"), [this] { history_.stop(); });
    layout->addWidget(delete_);
    layout->addStretch(1);
    layout->addWidget(stop_);
    layout->addWidget(show_);
    layout->addWidget(undo_);
    return footer;
}

const RemovalHistoryEntry* HistoryScreen::current() const {
    return list_.entry(runs_->currentIndex());
}

/// The chosen items of the run, or all of it while none is chosen.
void HistoryScreen::undo() {
    const auto* entry = current();
    if (!entry) return;
    const auto chosen = itemList_.choice(items_->selectionModel()->selectedIndexes());
    items_->clearSelection(); // what is put back can not be put back again
    partlyUndone_ = chosen.empty() ? Path() : entry->root;
    undo(entry->root, chosen);
}

void HistoryScreen::undo(const Path& root, const ItemChoice& items) {
    actions_.onceThere([history = &history_, root, items] { history->undo(root, items); });
}

void HistoryScreen::askToDelete() {
    const auto* entry = current();
    if (!entry) return;
    // With nothing held any more the question would frighten about what is back.
    const bool isBack = entry->items() == RemovalHistoryEntry::Items::putBack;
    const auto subject = runs_->currentIndex().data().toString().toStdString();
    ask(text(isBack ? "history.deleteRecord.title %@" : "history.delete.title %@", {subject}),
        isBack ? "history.deleteRecord.message" : "history.delete.message", "history.confirm.deleteButton",
        [this, chosen = *entry] { history_.remove({chosen}); });
}

void HistoryScreen::askToDeleteAll() {
    const auto& entries = history_.entries.get();
    if (entries.empty()) return;
    ask(text("history.deleteAll.title %lld", {std::to_string(entries.size())}), "history.deleteAll.message",
        "history.deleteAll.button", [this, asked = entries] { history_.removeAll(asked); });
}

void HistoryScreen::ask(const QString& title, const char* message, const char* button,
                        std::function<void()> act) {
    if (const auto problem = history_.whyNotRemove()) {
        parts::clear(*notices_);
        notices_->addWidget(makeNotice(NoticeTone::caution, {shown(texts_.text(*problem))}));
        return;
    }
    auto* sheet = new Sheet(window(), title);
    sheet->addWords({text(message)});
    auto& answers = sheet->addAnswers();
    answers.addWidget(
        parts::primaryButton(text("history.confirm.cancelButton"), [sheet] { sheet->cancel(); }));
    auto* doIt = parts::button(text(button), [this, sheet, act = std::move(act)] {
        sheet->close();
        actions_.onceThere(act);
    });
    doIt->setObjectName(QStringLiteral("delete for good"));
    answers.addWidget(doIt);
    sheet->open();
}

void HistoryScreen::update() {
    const auto& entries = history_.entries.get();
    ByteSum held;
    for (const auto& entry : entries)
        held.add(entry.sizeBytes, entry.isSizePartial);
    totals_ = text("history.total %lld %@", {std::to_string(entries.size()), sizeText(held, texts_)});
    showLine();
    showNotices();
    showEmpty();
    awaitTheOther();
    search_->setVisible(!entries.empty() || list_.isSearched());
    content_->setCurrentIndex(list_.rowCount() == 0 ? 1 : 0);
    if (!current()) runs_->setCurrentIndex(list_.indexOf(currentRoot_));
    showItems();
}

void HistoryScreen::awaitTheOther() {
    constexpr int interval = 2000; // milliseconds
    if (isVisible() && history_.isAnotherAtWork.get() && !history_.isLoading.get()) again_.start(interval);
}

/// What stands in place of the list while it has no rows.
void HistoryScreen::showEmpty() {
    empty_->setIcon(QStringLiteral("history"));
    empty_->offer({});
    if (const auto& why = history_.unreadable.get()) {
        empty_->offer(text("leftovers.again"), [this] { history_.load(); });
        return empty_->say(text("history.unreadable.title"), shown(texts_.text(*why)));
    }
    // After an interruption, too: that nothing was removed is only said once all was looked at.
    if (history_.isLoading.get()) return empty_->say(text("history.loading"), {});
    if (history_.entries.get().empty()) {
        empty_->offer(text("leftovers.again"), [this] { history_.load(); });
        return empty_->say(text("history.empty.title"), text("history.empty.message"));
    }
    empty_->setIcon(QStringLiteral("search"));
    empty_->say(text("orphans.filter.empty.title"),
                text("orphans.filter.empty.body %@", {shown(search_->text().toStdString()).toStdString()}));
    empty_->offer(text("orphans.filter.empty.clear"), [this] { search_->clear(); });
}

/// How far an action is, or what there is.
void HistoryScreen::showLine() {
    const auto& step = history_.progress.get();
    const bool isFirstLoad = history_.isLoading.get() && history_.entries.get().empty();
    if (history_.busyEntryID.get() && step)
        header_->setLine(stepWords(*step, texts_, user_));
    else
        header_->setLine(isFirstLoad                 ? text("history.loading")
                         : history_.unreadable.get() ? QString() // nobody knows how many
                                                     : totals_);
}

/// What the last undo or deletion came to, and what the list does not show.
void HistoryScreen::showNotices() {
    parts::clear(*notices_);
    const auto dismissible = [this](NoticeTone tone, const QString& title, const QString& body = {}) {
        auto* notice =
            makeNotice(tone, {title, body, text("window.dismiss")}, [this] { history_.forgetOutcome(); });
        notice->setAccessibleDescription(text("history.undoStrip"));
        notices_->addWidget(notice);
    };
    if (const auto error = history_.errorMessage()) dismissible(NoticeTone::caution, shown(*error));
    if (const auto& undo = history_.lastUndo.get()) {
        dismissible(isAsBefore(*undo) ? NoticeTone::information : NoticeTone::caution,
                    text("report.undo.restored %lld %lld",
                         {std::to_string(undo->restoredCount), std::to_string(undo->totalCount)}),
                    firstLines(undoLines(*undo, runsJobs_, texts_), mostNoticeLines, texts_));
    }
    const auto warn = [this](const QString& title, const QString& body = {}) {
        notices_->addWidget(makeNotice(NoticeTone::caution, {title, body}));
    };
    if (history_.isAnotherAtWork.get()) warn(text("history.anotherAtWork"));
    if (const auto count = history_.leftOut.get().size(); count > 0)
        warn(text("cli.history.leftOut %lld", {std::to_string(count)}));
    for (const auto& run : history_.unfinishedRuns.get()) {
        const NoticeWords words = {list_.interruptedTitle(run), shown(texts_.text(run.advice())),
                                   text("home.recovery.undo")};
        notices_->addWidget(
            run.known ? makeNotice(NoticeTone::caution, words, [this, root = run.root] { undo(root, {}); })
                      : makeNotice(NoticeTone::caution, words));
    }
}

void HistoryScreen::showItems() {
    const auto* entry = current();
    itemList_.show(entry);
    const bool canChoose = entry && !entry->pendingItems.empty();
    items_->setFocusPolicy(canChoose ? Qt::StrongFocus : Qt::ClickFocus);
    const auto help = entry ? list_.help(*entry) : QString();
    state_->setText(help);
    state_->setVisible(!help.isEmpty());
    updateFooter();
}

void HistoryScreen::updateFooter() {
    const auto* entry = current();
    const bool isBusy = history_.busyEntryID.get().has_value();
    const bool areChosen = items_->selectionModel()->hasSelection();
    if (isBusy) stop_->show();
    if (isBusy && undo_->hasFocus()) stop_->setFocus(); // else whatever comes next would have it
    if (!isBusy && stop_->hasFocus()) runs_->setFocus();
    stop_->setVisible(isBusy);
    const bool isBack = entry && entry->items() == RemovalHistoryEntry::Items::putBack;
    const bool isUndoing = isBusy && !history_.isDeleting();
    undo_->setText(text(isUndoing   ? "home.recovery.restoring"
                        : areChosen ? "history.undo.chosen"
                                    : "history.undoButton"));
    const auto enable = [this](QPushButton& button, bool isEnabled) {
        if (!isEnabled && button.hasFocus()) runs_->setFocus(); // or the next widget of the window has it
        button.setEnabled(isEnabled);
    };
    enable(*undo_, entry && entry->canBeUndone(runsJobs_) && !isBack && !isBusy);
    enable(*show_, entry != nullptr);
    enable(*delete_, entry && !isBusy);
    enable(*deleteAll_, !history_.entries.get().empty() && !isBusy);
}

void HistoryScreen::search() {
    if (!search_->isVisible()) return;
    search_->setFocus();
    search_->selectAll();
}

/// What is typed in a list is a search, not a jump to a row.
bool HistoryScreen::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::KeyPress && search_->isVisible()
        && typeInto(*search_, *static_cast<QKeyEvent*>(event)))
        return true;
    return QWidget::eventFilter(object, event);
}

void HistoryScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    awaitTheOther();
}

/// Whoever comes back begins with the newest run.
void HistoryScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    currentRoot_ = Path();
}

void HistoryScreen::keyPressEvent(QKeyEvent* event) {
    if (leaveDown(*search_, *runs_, *event)) return;
    if (search_->isVisible() && typeInto(*search_, *event)) return;
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && runs_->hasFocus()) return undo_->click();
    if (event->matches(QKeySequence::Undo)) {
        const auto* entry = current();
        const bool wasOfItems =
            entry && entry->root == partlyUndone_ && !items_->selectionModel()->hasSelection();
        if (!wasOfItems) undo_->click(); // nothing while it is disabled
        return;                          // the same key again does not put back all the rest
    }
    QWidget::keyPressEvent(event);
}

QString HistoryScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

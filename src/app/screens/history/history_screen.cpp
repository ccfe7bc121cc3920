#include "app/screens/history/history_screen.h"

#include "app/models/trace_words.h"
#include "app/screens/history/history_delegate.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "quarantine/manifest.h"
#include "quarantine/run_items.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QStackedLayout>
#include <QStringListModel>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

HistoryScreen::HistoryScreen(HistoryModel& history, const Texts& texts, UserEnvironment user,
                             std::function<void(const Path&)> reveal)
    : history_(history),
      texts_(texts),
      user_(std::move(user)),
      reveal_(std::move(reveal)),
      list_(history, texts) {
    auto* layout = parts::column(this);
    header_ = new ScreenHeader(text("window.history"));
    layout->addWidget(header_);
    notices_ = parts::column(nullptr, scaled(6));
    notices_->setContentsMargins(scaled(24), 0, scaled(24), scaled(6));
    layout->addLayout(notices_);
    layout->addWidget(makeContent(), 1);
    layout->addWidget(makeFooter());
    connect(runs_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { showItems(); });
    connect(&list_, &QAbstractItemModel::modelReset, this, [this] { update(); });
    const auto follow = [this](auto& property) {
        following_.push_back(property.observe([this](const auto&) { update(); }));
    };
    follow(history_.isLoading);
    follow(history_.unfinishedRuns);
    follow(history_.unreadable);
    follow(history_.busyEntryID);
    following_.push_back(history_.progress.observe([this](const auto&) { showLine(); }));
    follow(history_.lastUndo);
    follow(history_.error);
    update();
}

QWidget* HistoryScreen::makeContent() {
    runs_ = new QListView;
    setFocusProxy(runs_);
    runs_->setObjectName(QStringLiteral("runs"));
    runs_->setAccessibleName(text("window.history"));
    runs_->setItemDelegate(new HistoryDelegate(runs_));
    runs_->setModel(&list_);
    items_ = new QListView;
    items_->setAccessibleName(text("history.items"));
    items_->setObjectName(QStringLiteral("items"));
    items_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    items_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    items_->setUniformItemSizes(true);
    items_->setSpacing(scaled(3));
    items_->setTextElideMode(Qt::ElideMiddle);
    itemNames_ = new QStringListModel(this);
    items_->setModel(itemNames_);
    connect(items_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { updateFooter(); });
    for (auto* view : {runs_, items_}) {
        view->setFrameShape(QFrame::NoFrame);
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
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
        if (const auto* entry = current()) reveal_(entry->root);
    });
    undo_ = parts::primaryButton(text("history.undoButton"), [this] { undo(); });
    undo_->setObjectName(QStringLiteral("undo run"));
    stop_ = parts::button(text("removing.stop"), [this] { history_.stop(); });
    layout->addWidget(delete_);
    layout->addStretch(1);
    layout->addWidget(stop_);
    layout->addWidget(show_);
    layout->addWidget(undo_);
    return footer;
}

const RemovalHistoryEntry* HistoryScreen::current() const {
    const auto index = runs_->currentIndex();
    return index.isValid() && index.row() < list_.rowCount() ? &list_.entry(index) : nullptr;
}

/// The chosen items of the run, or all of it while none is chosen.
void HistoryScreen::undo() {
    const auto* entry = current();
    if (!entry) return;
    ItemChoice chosen;
    for (const auto& index : items_->selectionModel()->selectedIndexes())
        chosen.insert(sources_[static_cast<std::size_t>(index.row())]);
    items_->clearSelection(); // what is put back can not be put back again
    if (chosen.empty())
        history_.undo(*entry);
    else
        history_.undo(entry->root, chosen);
}

void HistoryScreen::askToDelete() {
    const auto* entry = current();
    if (!entry) return;
    if (const auto problem = history_.whyNotRemove()) {
        parts::clear(*notices_);
        notices_->addWidget(makeNotice(NoticeTone::caution, {QString::fromStdString(texts_.text(*problem))}));
        return;
    }
    const auto title =
        text("history.delete.title %@", {runs_->currentIndex().data().toString().toStdString()});
    auto* sheet = new Sheet(window(), title);
    sheet->addWords({text("history.delete.message")});
    auto& answers = sheet->addAnswers();
    answers.addWidget(
        parts::primaryButton(text("history.confirm.cancelButton"), [sheet] { sheet->cancel(); }));
    answers.addWidget(parts::button(text("history.confirm.deleteButton"), [this, sheet, chosen = *entry] {
        sheet->close();
        history_.remove({chosen});
    }));
    sheet->open();
}

void HistoryScreen::update() {
    const auto& entries = history_.entries.get();
    std::int64_t bytes = 0;
    for (const auto& entry : entries)
        bytes += entry.sizeBytes.value_or(0);
    totals_ = text("history.total %lld %@",
                   {std::to_string(entries.size()), sizeWords(bytes, texts_).toStdString()});
    showLine();
    parts::clear(*notices_);
    if (const auto error = history_.errorMessage())
        notices_->addWidget(makeNotice(NoticeTone::caution, {QString::fromStdString(*error)}));
    if (const auto& undo = history_.lastUndo.get()) {
        const bool isWhole = undo->failures.empty();
        const auto counts = text("report.undo.restored %lld %lld",
                                 {std::to_string(undo->restoredCount), std::to_string(undo->totalCount)});
        notices_->addWidget(
            makeNotice(isWhole ? NoticeTone::information : NoticeTone::caution,
                       {counts, isWhole ? QString() : shown(undo->failures.front().text(texts_))}));
    }
    for (const auto& run : history_.unfinishedRuns.get())
        notices_->addWidget(
            makeNotice(NoticeTone::caution,
                       {shown(run.root.lastComponent()), QString::fromStdString(texts_.text(run.advice()))}));
    if (history_.unreadable.get())
        empty_->say(text("history.unreadable.title"), text("history.unreadable.body"));
    else
        empty_->say(text("history.empty.title"), text("history.empty.message"));
    content_->setCurrentIndex(entries.empty() ? 1 : 0);
    if (!entries.empty() && !current()) runs_->setCurrentIndex(list_.index(0));
    showItems();
}

/// How far an action is, or what there is.
void HistoryScreen::showLine() {
    const auto& step = history_.progress.get();
    if (history_.busyEntryID.get() && step)
        header_->setLine(stepWords(*step, texts_, user_));
    else
        header_->setLine(history_.isLoading.get() ? text("history.loading") : totals_);
}

void HistoryScreen::showItems() {
    QStringList names;
    std::vector<std::string> sources;
    if (const auto* entry = current())
        for (const auto& item : entry->manifest.entries)
            if (item.kind == ManifestEntryKind::move) {
                sources.push_back(item.source);
                names << shortPath(Path(item.source), user_);
            }
    if (sources != std::exchange(sources_, sources)) itemNames_->setStringList(names);
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
    undo_->setText(text(isBusy      ? "home.recovery.restoring"
                        : areChosen ? "history.undo.chosen"
                                    : "history.undoButton"));
    undo_->setEnabled(entry && entry->canBeUndone() && !isBusy);
    show_->setEnabled(entry != nullptr);
    delete_->setEnabled(entry && !isBusy);
}

void HistoryScreen::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Undo)) return undo_->click(); // nothing while it is disabled
    QWidget::keyPressEvent(event);
}

QString HistoryScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

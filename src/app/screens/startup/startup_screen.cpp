#include "app/screens/startup/startup_screen.h"

#include "app/models/app_icons.h"
#include "app/widgets/card_row_delegate.h"
#include "app/widgets/empty_state.h"
#include "app/widgets/parts.h"
#include "app/widgets/screen_header.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/path.h"
#include "base/texts.h"
#include "system/startup_item.h"
#include "system/startup_items_model.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <algorithm>
#include <optional>
#include <string>
#include <variant>

namespace tidwen {

StartupScreen::StartupScreen(StartupItemsModel& model, AppIcons& icons, const Texts& texts, Actions actions)
    : ListScreen(texts,
                 {words(texts, "startup.title"), "startup items", "power",
                  new CardRowDelegate(CardRowDelegate::Boxes::leading, icons)},
                 actions.remove),
      model_(model),
      actions_(std::move(actions)),
      list_(model, texts),
      filter_(list_) {
    header().setLine(text("startup.subtitle"));
    nameFooter("startup.selectionCount", "startup.removeButton");
    empty().setAccessibleName(text("startup.emptyState"));
    action_ = addButton("startup.switchOn", "switch", [this] { act(view().currentIndex()); });
    selectOrphans_ =
        addButton("startup.selectAllOrphans", "select orphans", [this] { model_.toggleSelectAllOrphans(); });
    setModel(filter_);
    view().onControl = [this](const QModelIndex& index) { act(index); };
    connect(view().selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { showAction(); });
    follow(model_.result, model_.isLoading, model_.selection);
    keep(model_.rows.changed.connect([this](const auto&) { refresh(); }));
    keep(model_.toggleError.observe([this](const auto&) { showError(); }));
    refresh();
}

void StartupScreen::searchFor(const QString& query) {
    filter_.setQuery(query);
    refresh();
}

void StartupScreen::refresh() {
    const auto& rows = model_.rows.rows();
    const auto& result = model_.result.get();
    setUsable(!rows.empty());
    showList(filter_.rowCount() > 0);
    if (filter_.rowCount() == 0) showEmpty();
    QStringList reasons;
    for (const auto& folder : result.unreadable)
        reasons << text("cli.unreadable %@", {shown(folder.string()).toStdString()});
    if (result.leftOut > 0) reasons << text("cli.leftOut %lld", {std::to_string(result.leftOut)});
    showReasons(text("review.incomplete.title"), reasons,
                {text("leftovers.again"), [this] { model_.load(); }});
    const auto chosen = model_.selection.get().size();
    showChosen(chosen, {}, chosen - std::min(chosen, countTicked()));
    selectOrphans_->setEnabled(std::ranges::any_of(rows, [](const StartupItemRow& row) {
        return section(row.item) == StartupSection::orphans && row.isSelectable;
    }));
    showAction();
}

void StartupScreen::showEmpty() {
    if (!model_.rows.rows().empty()) return showNoMatch();
    empty().setIcon(QStringLiteral("power"));
    empty().offer({});
    if (model_.isLoading.get()) {
        empty().say(text("startup.loading"), {});
    } else {
        const bool isUnreadable = !model_.result.get().unreadable.empty();
        if (isUnreadable) empty().setIcon(QStringLiteral("warning"));
        empty().say(text(isUnreadable ? "startup.unreadable.title" : "startup.empty.title"),
                    text(isUnreadable ? "startup.unreadable.message" : "startup.empty.message"));
        empty().offer(text("leftovers.again"), [this] { model_.load(); });
    }
}

const StartupItemRow* StartupScreen::rowAt(const QModelIndex& index) const {
    return list_.row(filter_.mapToSource(index));
}

QString StartupScreen::actionWords(const StartupItemRow& row) const {
    switch (row.switchState) {
    case SwitchState::on:
        return text("startup.switchOff");
    case SwitchState::off:
        return text("startup.switchOn");
    case SwitchState::systemSettings:
        return text("startup.toggle.systemSettings");
    default:
        return {};
    }
}

/// What can be done by hand to the switch in the row can be done to this button by keyboard.
void StartupScreen::showAction() {
    const auto* row = rowAt(view().currentIndex());
    const auto words = row ? actionWords(*row) : QString();
    action_->setText(words);
    const bool isManaged = row && row->switchState == SwitchState::systemSettings;
    action_->setToolTip(isManaged ? text("startup.limitations") : QString());
    action_->setVisible(!words.isEmpty());
}

void StartupScreen::act(const QModelIndex& index) {
    const auto* row = rowAt(index);
    if (!row) return;
    if (row->switchState == SwitchState::systemSettings) return actions_.openLoginItems();
    model_.setEnabled(StartupItem(row->item), row->switchState == SwitchState::off);
}

void StartupScreen::showError() {
    const auto& error = model_.toggleError.get();
    if (!error || errorSheet_) return;
    const auto title = text("startup.toggle.errorTitle");
    auto* sheet = new Sheet(window(), title);
    errorSheet_ = sheet;
    sheet->onCancel = [this] { model_.toggleError.set(std::nullopt); };
    sheet->addWords({shown(texts().text(*error))});
    sheet->addAnswers().addWidget(
        parts::primaryButton(text("startup.toggle.errorOK"), [sheet] { sheet->cancel(); }));
    sheet->open();
}

void StartupScreen::fill(QMenu& menu) {
    const auto* row = rowAt(view().currentIndex());
    if (!row) return;
    if (const auto words = actionWords(*row); !words.isEmpty())
        connect(menu.addAction(words), &QAction::triggered, this, [this] { act(view().currentIndex()); });
    const auto* plist = row->item.plist();
    const auto* embedded = std::get_if<StartupItem::Embedded>(&row->item.source);
    const Path place = plist ? *plist : embedded ? embedded->bundle : Path();
    connect(menu.addAction(text("installers.row.reveal")), &QAction::triggered, this,
            [this, place] { actions_.reveal(place); });
}

} // namespace tidwen

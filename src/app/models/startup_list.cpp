#include "app/models/startup_list.h"

#include "app/models/card_row.h"
#include "app/widgets/words.h"
#include "system/startup_item.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <string>

namespace tidwen {

namespace {

using OwnerKind = StartupItem::Owner::Kind;

/// In the order in which they are shown.
constexpr std::array sections = {StartupSection::orphans, StartupSection::unattributed,
                                 StartupSection::owned};
constexpr std::array sectionKeys = {"startup.section.orphans", "startup.section.unattributed",
                                    "startup.section.owned"};

int sectionNumber(const StartupItemRow& row) {
    const auto found = std::find(sections.begin(), sections.end(), section(row.item));
    return static_cast<int>(found - sections.begin());
}

CardRow::Control controlOf(SwitchState state) {
    switch (state) {
    case SwitchState::on:
        return CardRow::Control::on;
    case SwitchState::off:
        return CardRow::Control::off;
    case SwitchState::switching:
        return CardRow::Control::busy;
    case SwitchState::systemSettings:
        return CardRow::Control::button;
    case SwitchState::none:
        break;
    }
    return CardRow::Control::none;
}

bool hasApplication(const StartupItem& item) {
    return item.owner.kind == OwnerKind::installed || item.owner.kind == OwnerKind::related;
}

} // namespace

StartupList::StartupList(StartupItemsModel& model, const Texts& texts)
    : SectionedList(model.rows, static_cast<int>(sections.size()), sectionNumber),
      model_(model),
      texts_(texts) {}

bool StartupList::setData(const QModelIndex& index, const QVariant& /*value*/, int role) {
    const auto* chosen = row(index);
    if (role != Qt::CheckStateRole || !chosen) return false;
    model_.toggleSelection(StartupItem(chosen->item));
    return true;
}

QVariant StartupList::rowData(const StartupItemRow& row, int role) const {
    const auto& item = row.item;
    switch (role) {
    case Qt::DisplayRole:
        return shown(item.label);
    case CardRow::second:
        return shown(model_.ownerText(item));
    case CardRow::badges:
        return badges(row);
    case CardRow::icon:
        return item.owner.kind == OwnerKind::missing ? QStringLiteral("warning") : QStringLiteral("power");
    case CardRow::isCaution:
        return item.owner.kind == OwnerKind::missing;
    case CardRow::appName:
        return hasApplication(item) ? shown(item.owner.name) : QString();
    case CardRow::bundleID:
        return QString::fromStdString(item.owner.bundleID.empty() ? item.owner.name : item.owner.bundleID);
    case CardRow::bundle:
        return item.owner.bundle ? QByteArray::fromStdString(item.owner.bundle->string()) : QByteArray();
    case CardRow::control:
        return static_cast<int>(controlOf(row.switchState));
    case CardRow::controlWords:
        return words(texts_, "startup.toggle.systemSettings");
    case Qt::CheckStateRole:
        if (!row.isSelectable) return {};
        return row.isSelected ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole:
        return toolTip(row);
    case Qt::AccessibleTextRole:
        return spoken(row);
    default:
        return {};
    }
}

QVariant StartupList::sectionData(int number, int role) const {
    const std::string key = sectionKeys[static_cast<std::size_t>(number)];
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) return words(texts_, key);
    const auto& found = model_.result.get();
    const bool isUnsure = sections[static_cast<std::size_t>(number)] == StartupSection::unattributed
                          && (!found.unreadable.empty() || found.leftOut > 0);
    if (role == CardRow::second)
        return words(texts_, isUnsure ? "startup.section.unattributed.unsure" : key + ".hint");
    return {};
}

QStringList StartupList::badges(const StartupItemRow& row) const {
    QStringList all;
    if (row.isOff) all << words(texts_, "startup.badge.off");
    if (row.item.isSystemDomain) all << words(texts_, "startup.badge.daemon");
    return all;
}

QString StartupList::toolTip(const StartupItemRow& row) const {
    auto tip = shown(row.item.id()).toHtmlEscaped();
    const auto why = model_.whyNoSwitch(row.item);
    const auto help = why ? QString::fromStdString(texts_.text(*why))
                          : words(texts_, row.isOff ? "startup.toggle.off.help" : "startup.toggle.on.help");
    return tip + QStringLiteral("<br>") + help.toHtmlEscaped();
}

QString StartupList::spoken(const StartupItemRow& row) const {
    QStringList parts = {shown(row.item.label)};
    if (row.item.isSystemDomain) parts << words(texts_, "startup.badge.daemon");
    if (row.switchState == SwitchState::on) parts << words(texts_, "startup.toggle.on");
    if (row.isOff) parts << words(texts_, "startup.toggle.off");
    if (row.isSelected) parts << words(texts_, "row.selected");
    parts << shown(model_.ownerText(row.item));
    return parts.join(QStringLiteral(", "));
}

} // namespace tidwen

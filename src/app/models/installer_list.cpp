#include "app/models/installer_list.h"

#include "app/models/card_row.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/language.h"
#include "base/path.h"
#include "base/texts.h"
#include "sweep/installer_scanner.h"

#include <QStringList>

namespace tidwen {

InstallerList::InstallerList(InstallersModel& model, const Texts& texts)
    : SectionedList(model.rows, 2, [](const InstallerRow& row) { return row.file.installedApp ? 0 : 1; }),
      model_(model),
      texts_(texts) {}

bool InstallerList::setData(const QModelIndex& index, const QVariant& /*value*/, int role) {
    const auto* chosen = row(index);
    if (role != Qt::CheckStateRole || !chosen) return false;
    model_.toggleSelection(Path(chosen->file.url));
    return true;
}

QVariant InstallerList::rowData(const InstallerRow& row, int role) const {
    const auto& file = row.file;
    switch (role) {
    case Qt::DisplayRole:
        return shown(file.url.lastComponent());
    case CardRow::second:
        return secondLine(file);
    case CardRow::size:
        return file.sizeBytes ? QString::fromStdString(sizeText(*file.sizeBytes, file.isSizePartial, texts_))
                              : QString();
    case CardRow::icon:
        return QStringLiteral("disk");
    case CardRow::appName:
        return file.installedApp ? shown(file.installedApp->name) : QString();
    case CardRow::bundleID:
        return file.installedApp ? QString::fromStdString(file.installedApp->bundleID) : QString();
    case CardRow::bundle:
        return file.installedApp ? QByteArray::fromStdString(file.installedApp->url.string()) : QByteArray();
    case Qt::CheckStateRole:
        return row.isSelected ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole:
        return shown(file.url.string()).toHtmlEscaped();
    case Qt::AccessibleTextRole:
        return spoken(row);
    default:
        return {};
    }
}

QVariant InstallerList::sectionData(int section, int role) const {
    const bool isMatched = section == 0;
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return words(texts_, isMatched ? "installers.section.matched" : "installers.section.unmatched");
    if (role == CardRow::second)
        return words(texts_,
                     isMatched ? "installers.section.matched.hint" : "installers.section.unmatched.hint");
    return {};
}

QString InstallerList::secondLine(const InstallerFile& file) const {
    auto line = file.installedApp ? words(texts_, "installers.row.installed %@",
                                          {shown(file.installedApp->name).toStdString()})
                                  : words(texts_, "installers.row.unmatched");
    if (file.addedAt)
        line += QStringLiteral(" · ") + QString::fromStdString(formatDay(*file.addedAt, texts_.language()));
    return line;
}

QString InstallerList::spoken(const InstallerRow& row) const {
    QStringList parts = {rowData(row, Qt::DisplayRole).toString(), rowData(row, CardRow::size).toString()};
    if (row.isSelected) parts << words(texts_, "row.selected");
    parts << secondLine(row.file);
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace tidwen

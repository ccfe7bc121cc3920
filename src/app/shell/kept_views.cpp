#include "app/shell/kept_views.h"

#include <QLineEdit>
#include <QTreeView>

namespace tidwen {

namespace {

/// Without the marks that a name has in a line written from the right.
QString wordsOf(const QModelIndex& index) {
    return index.data().toString().remove(QChar(0x2068)).remove(QChar(0x2069));
}

/// The folded ones among the rows below `above`.
void collectFolded(const QTreeView& tree, const QModelIndex& above, QList<QModelIndex>& folded) {
    for (int row = 0; row < tree.model()->rowCount(above); ++row) {
        const auto index = tree.model()->index(row, 0, above);
        if (!tree.model()->hasChildren(index)) continue;
        if (!tree.isExpanded(index)) folded << index;
        collectFolded(tree, index, folded);
    }
}

} // namespace

KeptViews::Row KeptViews::rowOf(const QModelIndex& index) {
    Row row;
    for (auto each = index; each.isValid(); each = each.parent())
        row.prepend({each.row(), wordsOf(each)});
    return row;
}

/// The row of the same number and words, else the one of these words: another language may sort otherwise.
/// Headings have other words by then, and count by their number.
QModelIndex KeptViews::find(const QAbstractItemView& view, const Row& row) {
    const auto& model = *view.model();
    QModelIndex found;
    for (const auto& [number, words] : row) {
        const auto isLast = &words == &row.last().second;
        const auto above = found;
        found = model.index(number, 0, above);
        if (!isLast || wordsOf(found) == words) continue;
        for (int other = 0; other < model.rowCount(above); ++other)
            if (const auto index = model.index(other, 0, above); wordsOf(index) == words) return index;
    }
    return found;
}

KeptViews::List KeptViews::listOf(const QAbstractItemView& view) {
    List kept;
    if (!view.model()) return kept;
    kept.current = rowOf(view.currentIndex());
    for (const auto& index : view.selectionModel()->selectedRows())
        kept.chosen << rowOf(index);
    QList<QModelIndex> folded;
    if (const auto* tree = qobject_cast<const QTreeView*>(&view)) collectFolded(*tree, {}, folded);
    for (const auto& index : folded)
        kept.folded << rowOf(index);
    kept.top = rowOf(view.indexAt(view.viewport()->rect().topLeft()));
    kept.hasFocus = view.hasFocus();
    return kept;
}

void KeptViews::give(const List& kept, QAbstractItemView& view) {
    if (!view.model()) return;
    if (auto* tree = qobject_cast<QTreeView*>(&view))
        for (const auto& row : kept.folded)
            tree->collapse(find(view, row));
    auto& chosen = *view.selectionModel();
    if (const auto current = find(view, kept.current); current.isValid())
        chosen.setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    chosen.clearSelection();
    for (const auto& row : kept.chosen)
        if (const auto index = find(view, row); index.isValid())
            chosen.select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (kept.hasFocus) view.setFocus();
    QMetaObject::invokeMethod( // once it has its size
        &view, [&view, top = kept.top] { view.scrollTo(find(view, top), QAbstractItemView::PositionAtTop); },
        Qt::QueuedConnection);
}

KeptViews KeptViews::of(const QWidget& root) {
    KeptViews kept;
    for (const auto* field : root.findChildren<QLineEdit*>())
        kept.fields_ << field->text();
    for (const auto* view : root.findChildren<QAbstractItemView*>())
        kept.lists_ << listOf(*view);
    return kept;
}

void KeptViews::giveTo(QWidget& root) const {
    const auto fields = root.findChildren<QLineEdit*>();
    for (qsizetype i = 0; i < fields.size() && fields.size() == fields_.size(); ++i)
        fields[i]->setText(fields_[i]);
    const auto views = root.findChildren<QAbstractItemView*>();
    for (qsizetype i = 0; i < views.size() && views.size() == lists_.size(); ++i)
        give(lists_[i], *views[i]);
}

} // namespace tidwen

#include "app/widgets/search_field.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLineEdit>

namespace tidwen {

QLineEdit* searchField(const QString& placeholder) {
    auto* field = new QLineEdit;
    field->setObjectName(QStringLiteral("search"));
    field->setPlaceholderText(placeholder);
    field->setAccessibleName(placeholder);
    field->setClearButtonEnabled(true);
    field->setFixedWidth(scaled(190));
    field->addAction(controlIcon(QStringLiteral("search"), Role::second), QLineEdit::LeadingPosition);
    for (auto* button :
         field->findChildren<QAbstractButton*>()) // the cross that empties the field among them
        button->setAccessibleName(placeholder);
    return field;
}

bool typeInto(QLineEdit& field, const QKeyEvent& event) {
    if (event.key() == Qt::Key_Escape && !field.text().isEmpty()) {
        field.clear();
        return true;
    }
    const auto typed = event.text();
    const bool isText = !typed.isEmpty() && typed.at(0).isPrint() && typed != QStringLiteral(" ");
    if (!isText || event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    field.setFocus();
    field.setText(field.text() + typed);
    return true;
}

bool leaveDown(const QLineEdit& field, QAbstractItemView& list, const QKeyEvent& event) {
    if (event.key() != Qt::Key_Down || !field.hasFocus() || !list.isVisible()) return false;
    list.setFocus(Qt::TabFocusReason);
    return true;
}

} // namespace tidwen

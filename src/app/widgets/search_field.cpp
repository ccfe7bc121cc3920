#include "app/widgets/search_field.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/style.h"

#include <QAbstractButton>
#include <QLineEdit>

namespace tidwen {

QLineEdit* searchField(const QString& placeholder) {
    auto* field = new QLineEdit;
    field->setPlaceholderText(placeholder);
    field->setAccessibleName(placeholder);
    field->setClearButtonEnabled(true);
    field->setFixedWidth(scaled(190));
    const auto glass =
        iconPixmap(QStringLiteral("search"), scaled(16), colors()[Role::second], field->devicePixelRatioF());
    field->addAction(QIcon(glass), QLineEdit::LeadingPosition);
    for (auto* button :
         field->findChildren<QAbstractButton*>()) // the cross that empties the field among them
        button->setAccessibleName(placeholder);
    return field;
}

} // namespace tidwen

#include "app/screens/settings/settings_page.h"

#include "app/widgets/parts.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <QLabel>

#include <string>

namespace tidwen {

SettingsPage::SettingsPage(const Texts& texts, const char* title)
    : texts_(texts), rows_(parts::column(this, scaled(14))) {
    rows_->addWidget(parts::label(text(title), Type::sheet));
    rows_->addSpacing(scaled(2));
}

QLabel* SettingsPage::addRow(const QString& words, const QString& more, QWidget* control) {
    auto* row = new QWidget;
    auto* line = parts::row(row, scaled(12));
    auto* column = parts::column(nullptr, scaled(1));
    column->addWidget(parts::paragraph(words));
    auto* second = parts::paragraph({}, Type::second, Role::second);
    column->addWidget(second);
    say(*second, more);
    line->addLayout(column, 1);
    if (control) line->addWidget(control);
    rows_->addWidget(row);
    return second;
}

void SettingsPage::say(QLabel& line, const QString& words) {
    line.setText(words);
    line.setVisible(!words.isEmpty());
}

QLabel* SettingsPage::addParagraph(const QString& words, Role role) {
    auto* label = parts::paragraph(words, Type::body, role);
    rows_->addWidget(label);
    return label;
}

void SettingsPage::addStretch() {
    rows_->addStretch(1);
}

QString SettingsPage::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

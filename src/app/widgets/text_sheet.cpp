#include "app/widgets/text_sheet.h"

#include "app/style/metrics.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"

#include <QBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>

namespace tidwen {

void openTextSheet(QWidget* window, const QString& title, const QStringList& lines, const QString& done) {
    auto* sheet = new Sheet(window, title, 560);
    sheet->addWords({});
    auto* text = new QPlainTextEdit(lines.join(QLatin1Char('\n')));
    text->setReadOnly(true);
    text->setTabChangesFocus(true);
    text->setAccessibleName(title);
    text->setObjectName(QStringLiteral("all lines"));
    text->setFixedHeight(scaled(300));
    sheet->content().addWidget(text);
    sheet->addAnswers().addWidget(parts::primaryButton(done, [sheet] { sheet->cancel(); }));
    sheet->open();
}

} // namespace tidwen

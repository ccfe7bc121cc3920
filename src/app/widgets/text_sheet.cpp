#include "app/widgets/text_sheet.h"

#include "app/widgets/parts.h"
#include "app/widgets/read_only_text.h"
#include "app/widgets/sheet.h"

#include <QBoxLayout>
#include <QPushButton>

namespace tidwen {

void openTextSheet(QWidget* window, const QString& title, const QStringList& lines, const QString& done) {
    auto* sheet = new Sheet(window, title, 560);
    sheet->addWords({});
    auto* text = new ReadOnlyText(lines, title, 300);
    text->setObjectName(QStringLiteral("all lines"));
    sheet->content().addWidget(text);
    sheet->addAnswers().addWidget(parts::primaryButton(done, [sheet] { sheet->cancel(); }));
    sheet->open();
}

} // namespace tidwen

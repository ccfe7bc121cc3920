#include "app/screens/welcome/gone_sheet.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace tidwen {

Sheet* openGoneSheet(QWidget* window, const QString& name, const Texts& texts, QMenu* systems,
                     std::function<void()> lookAgain) {
    const auto title = words(texts, "window.gone.title %@", {name.toStdString()});
    auto* sheet = new Sheet(window, title);
    sheet->stays = true; // what lies in the folder now may be another's
    auto* line = parts::row(nullptr, scaled(14));
    line->addWidget(parts::picture(QStringLiteral("disk"), Role::look, 32));
    line->addWidget(parts::paragraph(title, Type::sheet), 1);
    sheet->content().addLayout(line);
    sheet->content().addWidget(parts::paragraph(words(texts, "window.gone.body")));
    auto* buttons = parts::row(nullptr, scaled(6));
    buttons->addStretch(1);
    auto* another = parts::button(words(texts, "window.gone.another"), [] {});
    another->setObjectName(QStringLiteral("another"));
    QObject::connect(another, &QPushButton::clicked, systems, [another, systems] {
        systems->popup(another->mapToGlobal(QPoint(0, another->height())));
    });
    buttons->addWidget(another);
    auto* again = parts::primaryButton(words(texts, "window.gone.again"), std::move(lookAgain));
    again->setObjectName(QStringLiteral("look again"));
    buttons->addWidget(again);
    sheet->content().addLayout(buttons);
    sheet->open();
    return sheet;
}

} // namespace tidwen

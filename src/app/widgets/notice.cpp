#include "app/widgets/notice.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/wrapping_row.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <optional>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

struct Parts {
    QWidget* panel;
    QBoxLayout* row; ///< the picture and the words, then a button
    QBoxLayout* text;
};

Parts makeParts(NoticeTone tone, const NoticeWords& words) {
    const bool isCaution = tone == NoticeTone::caution;
    const auto ground = isCaution ? Role::lookGround : Role::chosen;
    const auto color = isCaution ? Role::look : Role::accent;
    auto* panel = new Panel({.ground = ground, .line = std::nullopt, .radius = 8});
    auto* row = new WrappingRow(panel);
    row->setSpacing(scaled(10));
    row->setContentsMargins(scaled(12), scaled(9), scaled(12), scaled(9));
    auto* line = parts::row(nullptr, scaled(10));
    row->addLayout(line, 1);
    const auto usual = isCaution ? QStringLiteral("warning") : QStringLiteral("undo");
    line->addWidget(parts::picture(words.icon.isEmpty() ? usual : words.icon, color));
    auto* text = parts::column(nullptr, scaled(2));
    text->addWidget(parts::paragraph(words.title, words.body.isEmpty() ? Type::body : Type::strong, color));
    if (!words.body.isEmpty()) text->addWidget(parts::paragraph(words.body, Type::second, color));
    line->addLayout(text, 1);
    return {panel, row, text};
}

} // namespace

QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::function<void()> onAction) {
    const auto made = makeParts(tone, words);
    if (onAction) made.row->addWidget(parts::button(words.action, std::move(onAction)));
    return made.panel;
}

QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::vector<NoticeAction> actions) {
    const auto made = makeParts(tone, words);
    auto* buttons = new WrappingRow;
    buttons->setSpacing(scaled(6));
    buttons->setContentsMargins(0, scaled(6), 0, 0);
    for (auto& action : actions) {
        auto* button = parts::button(action.words, std::move(action.act));
        button->setObjectName(action.name);
        button->setEnabled(action.isEnabled);
        buttons->addWidget(button);
    }
    made.text->addLayout(buttons);
    return made.panel;
}

} // namespace tidwen

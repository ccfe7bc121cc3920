#include "app/widgets/notice.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"

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
    QBoxLayout* line; ///< the picture and the words
    QBoxLayout* text;
};

Parts makeParts(NoticeTone tone, const NoticeWords& words) {
    const bool isCaution = tone == NoticeTone::caution;
    const auto ground = isCaution ? Role::lookGround : Role::chosen;
    const auto color = isCaution ? Role::look : Role::accent;
    auto* panel = new Panel({.ground = ground, .line = std::nullopt, .radius = 8});
    auto* layout = parts::row(panel, scaled(10));
    layout->setContentsMargins(scaled(12), scaled(9), scaled(12), scaled(9));
    const auto usual = isCaution ? QStringLiteral("warning") : QStringLiteral("undo");
    layout->addWidget(parts::picture(words.icon.isEmpty() ? usual : words.icon, color));
    auto* text = parts::column(nullptr, scaled(2));
    text->addWidget(parts::paragraph(words.title, words.body.isEmpty() ? Type::body : Type::strong, color));
    if (!words.body.isEmpty()) text->addWidget(parts::paragraph(words.body, Type::second, color));
    layout->addLayout(text, 1);
    return {panel, layout, text};
}

} // namespace

QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::function<void()> onAction) {
    const auto made = makeParts(tone, words);
    if (onAction) made.line->addWidget(parts::button(words.action, std::move(onAction)));
    return made.panel;
}

QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::vector<NoticeAction> actions) {
    const auto made = makeParts(tone, words);
    auto* buttons = parts::row(nullptr, scaled(6));
    buttons->setContentsMargins(0, scaled(6), 0, 0);
    for (auto& action : actions) {
        auto* button = parts::button(action.words, std::move(action.act));
        button->setObjectName(action.name);
        button->setEnabled(action.isEnabled);
        buttons->addWidget(button);
    }
    buttons->addStretch(1);
    made.text->addLayout(buttons);
    return made.panel;
}

} // namespace tidwen

#include "app/widgets/notice.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <optional>

namespace tidwen {

QWidget* makeNotice(NoticeTone tone, const NoticeWords& words, std::function<void()> onAction) {
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
    if (onAction) layout->addWidget(parts::button(words.action, std::move(onAction)));
    return panel;
}

} // namespace tidwen

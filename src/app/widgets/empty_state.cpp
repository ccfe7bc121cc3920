#include "app/widgets/empty_state.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/parts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tidwen {

namespace {

constexpr int emptyPictureSize = 36;

} // namespace

EmptyState::EmptyState(const QString& icon)
    : picture_(parts::picture(icon, Role::second, emptyPictureSize)),
      title_(parts::paragraph({}, Type::sheet)),
      sentence_(parts::paragraph({}, Type::body, Role::second)),
      action_(parts::primaryButton({}, [this] {
          if (act_) act_();
      })) {
    action_->setObjectName(QStringLiteral("empty action"));
    auto* layout = parts::column(this, scaled(8));
    for (auto* label : {picture_, title_, sentence_})
        label->setAlignment(Qt::AlignCenter);
    sentence_->setMaximumWidth(scaled(420));
    sentence_->setMinimumWidth(scaled(280));
    layout->addStretch(2);
    layout->addWidget(picture_);
    layout->addWidget(title_);
    layout->addLayout(parts::centred(sentence_));
    layout->addSpacing(scaled(6));
    layout->addWidget(action_, 0, Qt::AlignHCenter);
    layout->addStretch(3);
    offer({});
}

void EmptyState::setIcon(const QString& icon) {
    picture_->setPixmap(
        iconPixmap(icon, scaled(emptyPictureSize), colors()[Role::second], devicePixelRatioF()));
}

void EmptyState::say(const QString& title, const QString& sentence) {
    title_->setText(title);
    sentence_->setText(sentence);
    sentence_->setVisible(!sentence.isEmpty());
}

void EmptyState::offer(const QString& words, std::function<void()> act) {
    const bool hasIt = hasFocus() || action_->hasFocus();
    act_ = std::move(act);
    action_->setText(words);
    action_->setVisible(!words.isEmpty());
    if (hasIt) setFocus(); // or the next widget of the window has it
}

void EmptyState::focusInEvent(QFocusEvent* /*event*/) {
    if (action_->isVisible()) action_->setFocus();
}

} // namespace tidwen

#include "app/widgets/empty_state.h"

#include "app/widgets/parts.h"

#include <QBoxLayout>
#include <QLabel>

namespace tidwen {

EmptyState::EmptyState(const QString& icon)
    : title_(parts::label({}, Type::sheet)), sentence_(parts::paragraph({}, Type::body, Role::second)) {
    auto* layout = parts::column(this, scaled(8));
    auto* picture = parts::picture(icon, Role::second, 36);
    for (auto* label : {picture, title_, sentence_})
        label->setAlignment(Qt::AlignCenter);
    sentence_->setMaximumWidth(scaled(420));
    sentence_->setMinimumWidth(scaled(280));
    layout->addStretch(2);
    layout->addWidget(picture);
    layout->addWidget(title_);
    layout->addLayout(parts::centred(sentence_));
    layout->addStretch(3);
}

void EmptyState::say(const QString& title, const QString& sentence) {
    title_->setText(title);
    sentence_->setText(sentence);
    sentence_->setVisible(!sentence.isEmpty());
}

} // namespace tidwen

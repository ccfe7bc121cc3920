#include "app/screens/welcome/welcome_screen.h"

#include "app/screens/welcome/choice_card.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/style.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>

namespace tidwen {

WelcomeScreen::WelcomeScreen(const Texts& texts, Actions actions)
    : choices_(new QWidget), said_(parts::paragraph({}, Type::body, Role::second)) {
    auto* layout = parts::column(this, scaled(10));
    auto* title = parts::label(words(texts, "welcome.title"), Type::title);
    auto* sentence = parts::paragraph(words(texts, "welcome.sentence"), Type::body, Role::second);
    sentence->setFixedWidth(scaled(420));
    auto* open = new ChoiceCard(QStringLiteral("disk"), words(texts, "welcome.open"),
                                words(texts, "welcome.open.body"));
    auto* sample = new ChoiceCard(QStringLiteral("applications"), words(texts, "welcome.sample"),
                                  words(texts, "welcome.sample.body"));
    connect(open, &QAbstractButton::clicked, this, [act = std::move(actions.open)] { act(); });
    connect(sample, &QAbstractButton::clicked, this, [act = std::move(actions.sample)] { act(); });
    auto* row = parts::row(choices_, scaled(14));
    row->addWidget(open);
    row->addWidget(sample);
    auto* picture = new QLabel;
    picture->setPixmap(
        iconPixmap(QStringLiteral("tidwen"), scaled(84), colors()[Role::text], devicePixelRatioF()));
    layout->addStretch(2);
    layout->addWidget(picture, 0, Qt::AlignHCenter);
    for (auto* label : {title, sentence, said_})
        label->setAlignment(Qt::AlignCenter);
    layout->addSpacing(scaled(8));
    layout->addWidget(title, 0, Qt::AlignHCenter);
    layout->addLayout(parts::centred(sentence));
    layout->addSpacing(scaled(16));
    layout->addWidget(choices_, 0, Qt::AlignHCenter);
    layout->addWidget(said_);
    layout->addStretch(3);
}

void WelcomeScreen::say(const QString& words) {
    said_->setText(words);
}

void WelcomeScreen::setBusy(bool isBusy) {
    choices_->setEnabled(!isBusy);
}

void WelcomeScreen::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), colors()[Role::window]);
}

} // namespace tidwen

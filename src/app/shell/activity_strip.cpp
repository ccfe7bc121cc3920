#include "app/shell/activity_strip.h"

#include "app/models/trace_words.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/step_progress.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <optional>
#include <string>
#include <utility>

namespace tidwen {

ActivityStrip::ActivityStrip(SessionModels& models, const Texts& texts, UserEnvironment user)
    : models_(models),
      texts_(texts),
      user_(std::move(user)),
      step_(parts::paragraph({}, Type::second, Role::accent)),
      stop_(parts::button(words(texts, "removing.stop"), [this] { stop(); })) {
    auto* layout = parts::row(this);
    layout->setContentsMargins(scaled(24), scaled(12), scaled(24), 0);
    auto* panel = new Panel({.ground = Role::chosen, .line = std::nullopt, .radius = 8});
    auto* inner = parts::row(panel, scaled(10));
    inner->setContentsMargins(scaled(12), scaled(9), scaled(12), scaled(9));
    step_->setObjectName(QStringLiteral("activity"));
    stop_->setObjectName(QStringLiteral("stop activity"));
    inner->addWidget(step_, 1);
    inner->addWidget(stop_);
    layout->addWidget(panel);
    const auto follow = [this](auto& progress) {
        following_.push_back(progress.observe([this](const auto&) { update(); }));
    };
    follow(models.chores().progress);
    follow(models.removal().progress);
    update();
}

void ActivityStrip::update() {
    auto& flow = models_.removal();
    if (const auto& chore = models_.chores().progress.get())
        step_->setText(choreWords(*chore));
    else if (const auto& step = flow.progress.get(); step && flow.isUndoing())
        step_->setText(stepWords(*step, texts_, user_));
    else {
        hide(); // a scan or removal has a screen of its own
        stop_->setEnabled(true);
        return;
    }
    show();
}

/// Nobody asked for a chore, so it says what it is for in a sentence.
QString ActivityStrip::choreWords(StepProgress step) const {
    const auto* task = step.kind == "purge" ? "cli.progress.deleting" : "cli.progress.recovering";
    step.kind.clear();
    return words(texts_, task) + QLatin1Char(' ') + stepWords(step, texts_, user_);
}

void ActivityStrip::stop() {
    stop_->setEnabled(false); // the step at hand still ends
    models_.chores().stop();
    if (models_.removal().isUndoing()) models_.removal().stop();
}

} // namespace tidwen

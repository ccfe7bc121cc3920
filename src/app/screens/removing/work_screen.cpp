#include "app/screens/removing/work_screen.h"

#include "app/models/trace_words.h"
#include "app/screens/removing/phase_list.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/progress_ring.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/path.h"
#include "operations/stepwise_run.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>

#include <cstddef>
#include <cstdint>
#include <string>

namespace tidwen {

namespace {

constexpr int phasesWidth = 460;

} // namespace

WorkScreen::WorkScreen(const Texts& texts, AppIcons& icons, UserEnvironment user, std::function<void()> stop)
    : texts_(texts),
      user_(std::move(user)),
      icons_(icons),
      ring_(new ProgressRing),
      title_(parts::label({}, Type::title)),
      step_(parts::paragraph({}, Type::second, Role::second)),
      phases_(new PhaseList(texts)),
      note_(parts::paragraph({}, Type::second, Role::second)),
      stop_(parts::button({}, std::move(stop))) {
    stop_->setObjectName(QStringLiteral("stop"));
    auto* body = new QWidget;
    auto* layout = parts::column(body, scaled(10));
    layout->setContentsMargins(scaled(24), scaled(12), scaled(24), scaled(12));
    layout->addStretch(2);
    auto* applications = parts::row(nullptr, scaled(10));
    applications->addStretch(1);
    tiles_.reserve(mostApplications);
    for (std::size_t i = 0; i < mostApplications; ++i) {
        tiles_.push_back(new Tile(44, icons_));
        applications->addWidget(tiles_.back());
    }
    applications->addStretch(1);
    layout->addLayout(applications);
    showApplications({}, {});
    layout->addWidget(ring_, 0, Qt::AlignHCenter);
    for (auto* label : {title_, step_, note_})
        label->setAlignment(Qt::AlignCenter);
    layout->addWidget(title_);
    layout->addWidget(step_);
    phases_->setMaximumWidth(scaled(phasesWidth));
    layout->addLayout(parts::centred(phases_));
    layout->addWidget(note_);
    step_->setMinimumHeight(2 * QFontMetrics(textFont(Type::second)).height());
    layout->addWidget(stop_, 0, Qt::AlignHCenter);
    layout->addStretch(3);
    // In a low window large text goes beyond the lower edge.
    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(body);
    scroll->setFocusPolicy(Qt::NoFocus);
    parts::column(this)->addWidget(scroll);
}

void WorkScreen::show(const Words& words, const std::optional<StepProgress>& step) {
    title_->setText(words.title);
    const bool asksForPassword = step && step->kind == administratorStep && !words.prompt.isEmpty();
    note_->setText(asksForPassword ? words.prompt : words.note);
    stop_->setText(words.stop);
    stop_->setEnabled(true);
    step_->setText(step ? stepWords(*step, texts_, user_) : QString());
    const auto ofStep =
        step && step->total > 0 ? static_cast<double>(step->step) / static_cast<double>(step->total) : 0;
    ring_->show(words.part.value_or(ofStep));
    ring_->setAccessibleName(step_->text().isEmpty() ? words.title : step_->text());
}

void WorkScreen::showPhases(const std::vector<RemovalPhase>& phases) {
    phases_->show(phases);
}

void WorkScreen::showApplications(const std::vector<Application>& applications, const Path& atWork) {
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        tiles_[i]->setVisible(i < applications.size());
        if (i >= applications.size()) continue;
        const auto& each = applications[i];
        tiles_[i]->show(shown(each.name), each.bundleID, each.bundle);
        tiles_[i]->setEnabled(each.bundle == atWork);
    }
}

void WorkScreen::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && stop_->isEnabled()) return stop_->click();
    QWidget::keyPressEvent(event);
}

} // namespace tidwen

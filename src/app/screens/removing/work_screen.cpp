#include "app/screens/removing/work_screen.h"

#include "app/models/trace_words.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/progress_ring.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/path.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <cstddef>
#include <cstdint>
#include <string>

namespace tidwen {

namespace {

constexpr std::size_t mostTiles = 6; ///< of many applications, as many as fit into the least window

} // namespace

WorkScreen::WorkScreen(const Texts& texts, AppIcons& icons, UserEnvironment user, std::function<void()> stop)
    : texts_(texts),
      user_(std::move(user)),
      icons_(icons),
      ring_(new ProgressRing),
      title_(parts::label({}, Type::title)),
      step_(parts::paragraph({}, Type::second, Role::second)),
      note_(parts::paragraph({}, Type::second, Role::second)),
      stop_(parts::button({}, std::move(stop))) {
    stop_->setObjectName(QStringLiteral("stop"));
    auto* layout = parts::column(this, scaled(10));
    layout->setContentsMargins(scaled(24), 0, scaled(24), 0);
    layout->addStretch(2);
    auto* applications = parts::row(nullptr, scaled(10));
    applications->addStretch(1);
    tiles_.reserve(mostTiles);
    for (std::size_t i = 0; i < mostTiles; ++i) {
        tiles_.push_back(new Tile(44, icons_));
        applications->addWidget(tiles_.back());
    }
    applications->addStretch(1);
    layout->addLayout(applications);
    showApplications({}, {});
    layout->addWidget(ring_, 0, Qt::AlignHCenter);
    for (auto* label : {title_, step_, note_}) {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
    step_->setMinimumHeight(2 * QFontMetrics(textFont(Type::second)).height());
    layout->addWidget(stop_, 0, Qt::AlignHCenter);
    layout->addStretch(3);
}

void WorkScreen::show(const Words& words, const std::optional<StepProgress>& step) {
    title_->setText(words.title);
    note_->setText(words.note);
    stop_->setText(words.stop);
    stop_->setEnabled(true);
    step_->setText(step ? stepWords(*step, texts_, user_) : QString());
    const auto done =
        step && step->total > 0 ? static_cast<double>(step->step) / static_cast<double>(step->total) : 0;
    ring_->show(done);
    ring_->setAccessibleName(step_->text().isEmpty() ? words.title : step_->text());
}

void WorkScreen::showApplications(const std::vector<Application>& applications, const std::string& atWork) {
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        tiles_[i]->setVisible(i < applications.size());
        if (i >= applications.size()) continue;
        const auto& each = applications[i];
        tiles_[i]->show(shown(each.name), each.bundleID, each.bundle);
        tiles_[i]->setEnabled(each.name == atWork);
    }
}

void WorkScreen::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && stop_->isEnabled()) return stop_->click();
    QWidget::keyPressEvent(event);
}

} // namespace tidwen

#include "app/screens/removing/phase_list.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/language.h"

#include <QBoxLayout>
#include <QLabel>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tidwen {

namespace {

using State = RemovalPhase::State;

constexpr int iconSize = 18;

QWidget* markOf(State state) {
    if (state == State::done) return parts::picture(QStringLiteral("check"), Role::safe, iconSize);
    if (state == State::atWork) return parts::picture(QStringLiteral("drop"), Role::accent, iconSize);
    return new QWidget;
}

const char* wordFor(State state) {
    return state == State::done     ? "removing.state.done"
           : state == State::atWork ? "removing.state.atWork"
                                    : "removing.state.toCome";
}

} // namespace

PhaseList::PhaseList(const Texts& texts)
    : Panel(Look{}), texts_(texts), lines_(parts::column(this, scaled(12))) {
    setObjectName(QStringLiteral("phases"));
    lines_->setContentsMargins(scaled(16), scaled(14), scaled(16), scaled(14));
    hide();
}

void PhaseList::show(const std::vector<RemovalPhase>& phases) {
    if (!isSameBut(phases)) {
        parts::clear(*lines_);
        rows_.clear();
        for (const auto& phase : phases)
            rows_.push_back(addRow(phase));
    }
    for (std::size_t i = 0; i < phases.size(); ++i)
        tell(rows_[i], phases[i]);
    shown_ = phases;
    setVisible(!phases.empty());
}

/// Only the counts differ, which is so for most steps.
bool PhaseList::isSameBut(const std::vector<RemovalPhase>& phases) const {
    return std::ranges::equal(phases, shown_, [](const RemovalPhase& one, const RemovalPhase& other) {
        return one.kind == other.kind && one.state == other.state;
    });
}

PhaseList::Row PhaseList::addRow(const RemovalPhase& phase) {
    auto* line = parts::row(nullptr, scaled(10));
    auto* mark = markOf(phase.state);
    mark->setFixedWidth(scaled(iconSize));
    line->addWidget(mark);
    const auto color = phase.state == State::toCome ? Role::second : Role::text;
    auto* title = parts::paragraph(words(texts_, "removing.phase." + phase.kind), Type::body, color);
    line->addWidget(title, 1);
    auto* count = parts::label({}, Type::body, Role::second);
    line->addWidget(count);
    lines_->addLayout(line);
    for (auto* widget : {mark, static_cast<QWidget*>(title), static_cast<QWidget*>(count)})
        widget->show(); // now; the layout would do so later, and the card be empty for a moment
    return {title, count};
}

void PhaseList::tell(const Row& row, const RemovalPhase& phase) {
    const auto total = std::to_string(phase.total);
    QString count;
    if (phase.state == State::atWork && phase.total > 0)
        count = words(texts_, "work.step %lld %lld", {std::to_string(phase.done), total});
    else if (phase.total > 0)
        count =
            QString::fromStdString(formatNumber(static_cast<std::int64_t>(phase.total), texts_.language()));
    row.count->setText(count);
    QStringList spoken = {row.title->text(), count, words(texts_, wordFor(phase.state))};
    spoken.removeAll(QString());
    row.title->setAccessibleName(spoken.join(QStringLiteral(", ")));
}

} // namespace tidwen

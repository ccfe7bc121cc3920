#include "app/shell/said_above.h"

#include "app/style/metrics.h"
#include "app/widgets/notice.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <utility>

namespace tidwen {

namespace {

void clear(QBoxLayout& lines) {
    parts::clear(lines);
    lines.setContentsMargins({});
}

void add(QBoxLayout& lines, const QString& words, const QString& dismiss) {
    lines.setContentsMargins(scaled(24), scaled(12), scaled(24), 0);
    lines.addWidget(makeNotice(NoticeTone::caution, {words, {}, dismiss}, [&lines] { clear(lines); }));
}

} // namespace

SaidAbove::SaidAbove(QString dismiss)
    : dismiss_(std::move(dismiss)),
      errors_(parts::column(nullptr, scaled(6))),
      said_(parts::column(nullptr, scaled(6))) {
    auto* layout = parts::column(this);
    layout->addLayout(errors_);
    layout->addLayout(said_);
}

void SaidAbove::say(const QString& words) {
    clear(*said_);
    add(*said_, words, dismiss_);
}

void SaidAbove::fallSilent() {
    clear(*said_);
}

void SaidAbove::showError(const std::optional<std::string>& error) {
    if (std::exchange(shownError_, error) == error) return;
    clear(*errors_);
    if (error) add(*errors_, shown(*error), dismiss_);
}

bool SaidAbove::isErrorDismissed() const {
    return shownError_ && errors_->count() == 0;
}

void SaidAbove::dismissError() {
    clear(*errors_);
}

} // namespace tidwen

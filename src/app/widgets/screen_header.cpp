#include "app/widgets/screen_header.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/wrapping_row.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>

namespace tidwen {

namespace {

constexpr int longestWords = 200;

} // namespace

ScreenHeader::ScreenHeader(const QString& title)
    : layout_(parts::row(this, scaled(8))),
      leading_(parts::row(nullptr, scaled(8))),
      controls_(new WrappingRow),
      title_(parts::label(title, Type::title)),
      line_(parts::label({}, Type::second, Role::second)) {
    controls_->setSpacing(scaled(8));
    layout_->setContentsMargins(scaled(24), scaled(18), scaled(24), scaled(10));
    auto* words = parts::column(nullptr);
    for (auto* label : {title_, line_}) {
        label->setMinimumWidth(0);
        label->setWordWrap(true); // beside long words of other controls
        QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        label->setSizePolicy(policy);
        words->addWidget(label);
    }
    leading_->addLayout(words, 1);
    layout_->addLayout(leading_, 1);
    auto* line = parts::row(nullptr);
    line->addLayout(controls_);
    line->addStretch(1); // below the words they are no wider than beside them
    layout_->addLayout(line);
}

void ScreenHeader::setTitle(const QString& title) {
    title_->setText(title);
    title_->setToolTip(title.toHtmlEscaped());
    arrange();
}

void ScreenHeader::setLine(const QString& line) {
    line_->setText(line);
    arrange();
}

void ScreenHeader::addControl(QWidget* control) {
    controls_->addWidget(control);
}

void ScreenHeader::addLeading(QWidget* widget) {
    leading_->insertWidget(leading_->count() - 1, widget); // before the words
}

/// What stands beside the words comes and goes.
bool ScreenHeader::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) arrange();
    return QWidget::event(event);
}

void ScreenHeader::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

void ScreenHeader::arrange() {
    const auto margins = layout_->contentsMargins(); // of a layout that knows its new size only later
    const bool fits =
        wishedWidth() + controls_->sizeHint().width() <= width() - margins.left() - margins.right();
    layout_->setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

int ScreenHeader::wishedWidth() const {
    int words = 0;
    for (const auto* label : {title_, line_})
        words = qMax(words, label->fontMetrics().horizontalAdvance(label->text()));
    int icons = 0;
    for (int i = 0; i + 1 < leading_->count(); ++i)
        if (const auto* icon = leading_->itemAt(i)->widget(); !icon->isHidden())
            icons +=
                qMax(icon->sizeHint().width(), icon->minimumWidth()) + leading_->spacing(); // some are fixed
    return icons + qMin(words, scaled(longestWords)) + layout_->spacing();
}

} // namespace tidwen

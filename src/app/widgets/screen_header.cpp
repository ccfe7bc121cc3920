#include "app/widgets/screen_header.h"

#include "app/widgets/parts.h"

#include <QBoxLayout>
#include <QLabel>

namespace tidwen {

ScreenHeader::ScreenHeader(const QString& title)
    : layout_(parts::row(this, scaled(8))),
      title_(parts::label(title, Type::title)),
      line_(parts::label({}, Type::second, Role::second)) {
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
    layout_->addLayout(words, 1);
}

void ScreenHeader::setTitle(const QString& title) {
    title_->setText(title);
    title_->setToolTip(title.toHtmlEscaped());
}

void ScreenHeader::setLine(const QString& line) {
    line_->setText(line);
}

void ScreenHeader::addControl(QWidget* control) {
    layout_->addWidget(control);
}

void ScreenHeader::addLeading(QWidget* widget) {
    layout_->insertWidget(0, widget);
}

} // namespace tidwen

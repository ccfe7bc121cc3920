#include "app/widgets/details_pane.h"

#include "app/style/metrics.h"
#include "app/widgets/parts.h"
#include "app/widgets/scrolled.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"

#include <QBoxLayout>
#include <QPushButton>

#include <utility>

namespace tidwen {

namespace {

constexpr int foldsBelow = 960; ///< of the window's width

} // namespace

DetailsPane::DetailsPane(const Texts& texts, UserEnvironment user, FindDetails::Actions actions,
                         std::string tierNotes)
    : Panel({.radius = 0, .edges = Qt::LeftEdge}),
      texts_(texts),
      user_(std::move(user)),
      actions_(std::move(actions)),
      tierNotes_(std::move(tierNotes)),
      details_(new FindDetails(texts, user_, actions_, tierNotes_)) {
    setFixedWidth(FindDetails::paneWidth());
    setAccessibleName(words(texts_, "review.details"));
    auto* layout = parts::row(this);
    layout->setContentsMargins(1, 0, 0, 0); // for the line at its edge
    layout->addWidget(new Scrolled(details_));
}

void DetailsPane::show(const Trace* trace) {
    details_->show(trace);
    shown_ = trace;
    if (button_) fold();
}

QPushButton* DetailsPane::makeButton(Stands stands) {
    stands_ = stands;
    button_ = parts::button(words(texts_, "review.details"), [this] { openSheet(); });
    button_->setObjectName(QStringLiteral("details"));
    return button_;
}

void DetailsPane::fold() {
    const bool hasRoom = window()->width() >= scaled(foldsBelow);
    setVisible(hasRoom && (shown_ || stands_ == Stands::always));
    button_->setVisible(!hasRoom);
    button_->setEnabled(shown_ != nullptr);
}

void DetailsPane::openSheet() const {
    auto* sheet = new Sheet(window(), words(texts_, "review.details"), 340);
    const auto leave = [sheet](const auto& act) {
        return [sheet, act](const auto& argument) {
            sheet->close(); // what comes next may be another one
            act(argument);
        };
    };
    auto actions = actions_;
    if (actions.showPermissions) actions.showPermissions = leave(actions_.showPermissions);
    if (actions.openPane) actions.openPane = leave(actions_.openPane);
    auto* details = new FindDetails(texts_, user_, std::move(actions), tierNotes_);
    details->setFixedWidth(FindDetails::paneWidth());
    details->show(shown_);
    sheet->content().addWidget(details, 0);
    sheet->addAnswers().addWidget(
        parts::primaryButton(words(texts_, "permissions.doneButton"), [sheet] { sheet->cancel(); }));
    sheet->open();
}

} // namespace tidwen

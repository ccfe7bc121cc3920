#include "app/widgets/choice_button.h"

#include <QMenu>

namespace tidwen {

ChoiceButton::ChoiceButton(const QString& name, std::function<std::vector<Choice>()> choices)
    : name_(name), choices_(std::move(choices)) {
    auto* menu = new QMenu(this);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        menu->clear();
        for (const auto& choice : choices_()) {
            auto* action = menu->addAction(choice.title);
            action->setCheckable(true);
            action->setChecked(choice.isChosen);
            connect(action, &QAction::triggered, this, [choose = choice.choose] { choose(); });
        }
    });
    setMenu(menu);
    setAutoDefault(false);
    refresh();
}

void ChoiceButton::refresh() {
    for (const auto& choice : choices_())
        if (choice.isChosen) setText(choice.title);
    setAccessibleName(name_ + QStringLiteral(": ") + text());
}

} // namespace tidwen

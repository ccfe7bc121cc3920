#include "app/widgets/picker.h"

#include <QMenu>
#include <algorithm>

namespace tidwen {

Picker::Picker(const QString& name, std::vector<Choice> choices,
               const std::function<void(const std::string&)>& choose)
    : name_(name), choices_(std::move(choices)) {
    setAutoDefault(false);
    auto* menu = new QMenu(this);
    for (const auto& choice : choices_) {
        auto* action = menu->addAction(choice.words);
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [choose, value = choice.value] { choose(value); });
    }
    connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        const auto actions = menu->actions();
        for (qsizetype i = 0; i < actions.size(); ++i)
            actions[i]->setChecked(choices_[static_cast<std::size_t>(i)].value == value_);
    });
    setMenu(menu);
}

bool Picker::show(const std::string& value) {
    const auto chosen = std::ranges::find(choices_, value, &Choice::value);
    if (chosen == choices_.end()) return false;
    value_ = chosen->value;
    setText(chosen->words);
    setAccessibleName(name_ + QStringLiteral(": ") + chosen->words);
    return true;
}

} // namespace tidwen

#pragma once

#include <QPushButton>
#include <functional>
#include <vector>

namespace tidwen {

/// A button that shows what is chosen in its menu.
class ChoiceButton final : public QPushButton {
  public:
    struct Choice {
        QString title;
        bool isChosen = false;
        std::function<void()> choose;
    };
    /// `name`: what is chosen here, for a screen reader. `choices` is asked whenever the menu opens.
    ChoiceButton(const QString& name, std::function<std::vector<Choice>()> choices);

    /// Another choice holds now.
    void refresh();

  private:
    QString name_;
    std::function<std::vector<Choice>()> choices_;
};

} // namespace tidwen

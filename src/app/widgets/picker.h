#pragma once

#include <QPushButton>
#include <functional>
#include <string>
#include <vector>

namespace tidwen {

/// A button that shows one of several values and opens the list of them.
class Picker final : public QPushButton {
  public:
    struct Choice {
        std::string value;
        QString words;
    };
    /// `name`: what is chosen, for a screen reader.
    Picker(const QString& name, std::vector<Choice> choices,
           const std::function<void(const std::string&)>& choose);

    /// False, with nothing changed, for a value that is none of the choices.
    bool show(const std::string& value);

  private:
    QString name_;
    std::vector<Choice> choices_;
    std::string value_;
};

} // namespace tidwen

#pragma once

#include "app/models/user_settings.h"
#include "app/screens/settings/settings_page.h"
#include "base/texts.h"

#include <string>
#include <utility>
#include <vector>

namespace tidwen {

class Picker;

/// Looks, language, and how long things count.
class GeneralPage final : public SettingsPage {
  public:
    GeneralPage(UserSettings& settings, const Texts& texts);

  private:
    struct Option {
        const char* value;
        const char* words;
    };
    struct ChoiceWords {
        const char* title;
        const char* name;           ///< of the control
        const char* note = nullptr; ///< what the choice leads to
    };
    void addChoice(const char* setting, const ChoiceWords& words, const std::vector<Option>& options);
    void addLanguage();
    void showPresent();

    UserSettings& settings_;
    std::vector<std::pair<std::string, Picker*>> pickers_; ///< by setting
};

} // namespace tidwen

#include "app/screens/settings/general_page.h"

#include "app/widgets/picker.h"
#include "base/language.h"
#include "base/texts.h"
#include "settings/app_preferences.h"

#include <string>
#include <vector>

namespace tidwen {

GeneralPage::GeneralPage(UserSettings& settings, const Texts& texts)
    : SettingsPage(texts, "settings.tab.general"), settings_(settings) {
    addChoice("appearance", {"settings.general.appearance", "settings.general.appearancePicker"},
              {{"auto", "settings.appearance.system"},
               {"light", "settings.appearance.light"},
               {"dark", "settings.appearance.dark"}});
    addLanguage();
    addChoice("unusedThreshold", {"settings.unused.title", "settings.general.unusedPicker"},
              {{"oneMonth", "settings.unused.oneMonth"},
               {"threeMonths", "settings.unused.threeMonths"},
               {"sixMonths", "settings.unused.sixMonths"},
               {"twelveMonths", "settings.unused.twelveMonths"}});
    addChoice("quarantineRetention",
              {"settings.retention.title", "settings.general.retentionPicker", "settings.retention.note"},
              {{"never", "settings.retention.never"},
               {"sevenDays", "settings.retention.sevenDays"},
               {"thirtyDays", "settings.retention.thirtyDays"},
               {"ninetyDays", "settings.retention.ninetyDays"}});
    addStretch();
    follow(settings_.changed.connect([this] { showPresent(); }));
    showPresent();
}

void GeneralPage::addChoice(const char* setting, const ChoiceWords& words,
                            const std::vector<Option>& options) {
    std::vector<Picker::Choice> choices;
    choices.reserve(options.size());
    for (const auto& option : options)
        choices.push_back({option.value, text(option.words)});
    auto* picker = new Picker(text(words.name), std::move(choices),
                              [this, setting](const std::string& value) { settings_.set(setting, value); });
    picker->setObjectName(QString::fromLatin1(setting));
    pickers_.emplace_back(setting, picker);
    addRow(text(words.title), words.note ? text(words.note) : QString(), picker);
}

void GeneralPage::addLanguage() {
    std::vector<Picker::Choice> choices;
    for (const auto& description : preferenceDescriptions()) {
        if (description.name != "language") continue;
        for (auto& value : settings_.preferences().values(description)) {
            auto words = value == "system" ? text("settings.language.system")
                                           : QString::fromStdString(languageTitle(value));
            choices.push_back({std::move(value), std::move(words)});
        }
    }
    auto* picker = new Picker(text("settings.general.languagePicker"), std::move(choices),
                              [this](const std::string& value) { settings_.set("language", value); });
    picker->setObjectName(QStringLiteral("language"));
    pickers_.emplace_back("language", picker);
    addRow(text("settings.general.language"), {}, picker);
}

/// A value of a newer version has the effect of the default, and stays stored until another is chosen.
void GeneralPage::showPresent() {
    for (const auto& description : preferenceDescriptions())
        for (const auto& [setting, picker] : pickers_) {
            if (description.name != setting) continue;
            const auto value = settings_.preferences().get(setting);
            if (!value || !picker->show(*value)) picker->show(std::string(description.fallback));
            picker->setEnabled(!settings_.problem.get());
        }
}

} // namespace tidwen

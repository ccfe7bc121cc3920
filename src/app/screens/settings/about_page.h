#pragma once

#include "app/models/own_services.h"
#include "app/screens/settings/settings_page.h"
#include "base/texts.h"

class QPushButton;

namespace tidwen {

class Toggle;

/// Which version this is, whether there is a newer one, and what it is made with.
class AboutPage final : public SettingsPage {
  public:
    AboutPage(OwnServices& own, const Texts& texts);

  private:
    void showPresent();
    QString answer() const;

    OwnServices& own_;
    Toggle* checks_ = nullptr;
    QLabel* answer_ = nullptr;
    QPushButton* check_ = nullptr;
};

} // namespace tidwen

#pragma once

#include "app/models/own_services.h"
#include "app/screens/settings/permissions_page.h"
#include "app/widgets/sheet.h"
#include "base/observable.h"
#include "base/texts.h"
#include "system/permissions_model.h"

#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QStackedWidget;

namespace tidwen {

class Toggle;

/// What is told at the first start, in three steps: what the program does, Full Disk Access, and the Trash.
/// Each can be left for later; after the last one it does not come again by itself.
class OnboardingSheet final : public Sheet {
  public:
    struct Services {
        OwnServices& own;
        PermissionsModel* permissions; ///< null unless the running Mac is open
        PermissionsPage::OpenPane openPane;
    };
    /// What is passed by reference outlives it.
    OnboardingSheet(QWidget* window, Services services, const Texts& texts);

  private:
    QWidget* makeStep(const char* icon, const char* title, const std::vector<const char*>& paragraphs,
                      QWidget* more);
    QWidget* makeAccess();
    QWidget* makeTrash();
    QWidget* makeButtons();
    void go(int step);
    void next();
    void showPresent();
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    Services services_;
    const Texts& texts_;
    QStackedWidget* steps_ = nullptr;
    QLabel* count_ = nullptr;
    QLabel* access_ = nullptr;
    Toggle* watch_ = nullptr;
    QPushButton* back_ = nullptr;
    QPushButton* later_ = nullptr;
    QPushButton* next_ = nullptr;
    std::vector<Subscription> following_;
};

} // namespace tidwen

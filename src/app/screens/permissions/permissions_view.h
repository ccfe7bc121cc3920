#pragma once

#include "app/models/permission_list.h"
#include "app/widgets/sheet.h"
#include "base/observable.h"
#include "base/texts.h"
#include "scan/permissions/permission_audit.h"
#include "system/permissions_sheet.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QLabel;
class QPushButton;

namespace tidwen {

class AppIcons;
class RowView;

/// What one application may do, to be taken back. Asks before each, for that cannot be undone.
class PermissionsView final : public Sheet {
  public:
    /// Where the system shows all of it; without words there is no such place.
    struct Pane {
        QString words;
        std::function<void()> open;
    };
    /// `icons` and `texts` outlive it.
    PermissionsView(QWidget* window, std::unique_ptr<PermissionsSheet> sheet, AppIcons& icons,
                    const Texts& texts, Pane pane);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void makeContent(AppIcons& icons);
    void update();
    void askToRevoke(const std::vector<PermissionGrant>& grants);
    /// One after the other: each may ask for a password.
    void revoke(std::vector<PermissionGrant> grants);
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    std::unique_ptr<PermissionsSheet> sheet_;
    const Texts& texts_;
    Pane pane_;
    PermissionList list_;
    QBoxLayout* notices_ = nullptr;
    RowView* view_ = nullptr;
    QLabel* none_ = nullptr;
    QPushButton* revoke_ = nullptr;
    QPushButton* revokeAll_ = nullptr;
    std::vector<Subscription> following_;
};

} // namespace tidwen

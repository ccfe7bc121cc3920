#pragma once

#include "app/shell/open_mac.h"
#include "base/executor.h"
#include "base/texts.h"
#include "base/uuid.h"
#include "scan/applications/app_target.h"

#include <QPointer>
#include <QString>
#include <QWidget>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace tidwen {

class Sheet;

/// The sheets over the view of a Mac that ask before something happens: a removal, an application that does not
/// quit, a window that closes meanwhile, permissions to revoke.
class MacQuestions {
  public:
    /// What stands open, for the view that takes the place of this one in another language.
    struct Open {
        bool confirms = false;
        bool asksToStop = false;
        std::function<void()> whenStopped; ///< of the question, or of the stop that was its answer
    };

    /// Both outlive it. The sheets lie over the window of `view`.
    MacQuestions(QWidget& view, OpenMac& mac);
    ~MacQuestions();

    Open open() const;
    void reopen(Open open);
    /// Closes what the stage of the flow has answered, and asks what it asks.
    void follow();

    void confirm();
    void confirmInstallers();
    void confirmStartupItems();
    /// `openPrivacy` shows the pane of System Settings, where there is one.
    void showPermissions(AppTarget app, std::function<void()> openPrivacy);
    /// `whenStopped` is called once nothing runs any more.
    void askToStop(const std::function<void()>& whenStopped);

  private:
    void askToQuit();
    QString text(const char* key) const;

    QWidget& view_;
    OpenMac& mac_;
    const Texts& texts_;
    QPointer<Sheet> permissionsSheet_;
    QPointer<Sheet> quitSheet_;
    std::optional<Uuid> askedAbout_; ///< the quit question that stands
    QPointer<Sheet> confirmSheet_;
    std::size_t confirmedStage_ = 0; ///< the stage that the sheet asks about
    QPointer<Sheet> stopSheet_;
    std::function<void()> whenStopped_; ///< where a stop was asked for
    std::function<void()> wishToStop_;  ///< what `stopSheet_` asks about
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

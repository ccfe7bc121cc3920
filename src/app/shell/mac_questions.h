#pragma once

#include "app/shell/open_mac.h"
#include "base/executor.h"
#include "base/observable.h"
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
#include <vector>

namespace tidwen {

class Sheet;

/// The sheets over the view of a Mac that ask before something happens: a removal, an application that does
/// not quit, a window that closes meanwhile, permissions to revoke.
class MacQuestions {
  public:
    struct Closing {
        std::function<void()> hide;
        std::function<void()> whenStopped; ///< called once nothing runs any more
        std::function<void()> whenDone;    ///< the same after `hide`
    };
    /// What stands open, for the view that takes the place of this one in another language.
    struct Open {
        bool confirms = false;
        std::optional<Closing> asksToClose;
        std::function<void()> whenIdle; ///< of the answer to that
        bool measures = false;          ///< startup items, to ask about them
    };

    /// Both outlive it. The sheets lie over the window of `view`; `say` shows words above its screen.
    MacQuestions(QWidget& view, OpenMac& mac, std::function<void(const QString&)> say);
    ~MacQuestions();

    Open open() const;
    void reopen(Open open);
    /// Closes what the stage of the flow has answered, and asks what it asks.
    void follow();

    void confirm();
    void confirmInstallers();
    /// Asks once they are measured, and nothing else stands open.
    void confirmStartupItems();
    /// `openPrivacy` shows the pane of System Settings, where there is one.
    void showPermissions(AppTarget app, std::function<void()> openPrivacy);
    /// Something runs while the window is to be closed: it stops, goes on without the window, or the window
    /// stays.
    void askToClose(const Closing& closing);

  private:
    void askToQuit();
    void takeConfirmation();
    void confirmMeasured(std::vector<Trace> measured);
    QString text(const char* key) const;

    QWidget& view_;
    OpenMac& mac_;
    const Texts& texts_;
    std::function<void(const QString&)> say_;
    bool measures_ = false; ///< see `Open`
    QPointer<Sheet> permissionsSheet_;
    QPointer<Sheet> quitSheet_;
    std::optional<Uuid> askedAbout_; ///< the quit question that stands
    QPointer<Sheet> confirmSheet_;
    std::size_t confirmedStage_ = 0; ///< the stage that the sheet asks about
    QPointer<Sheet> closeSheet_;
    Closing closing_;                ///< what `closeSheet_` asks about
    std::function<void()> whenIdle_; ///< once nothing runs any more
    std::vector<Subscription> following_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
};

} // namespace tidwen

#pragma once

#include "base/message.h"
#include "base/observable.h"
#include "base/path.h"
#include "program/session.h"
#include "system/inbox_watcher.h"
#include "system/request_inbox.h"

#include <functional>
#include <memory>
#include <vector>

namespace tidwen {

class ServicesProvider;

/// What runs beside the window on the Mac that the program runs on: the Trash watch, and what the Finder
/// extension and the Services menu ask for. All of them only hand applications to the window, once it
/// takes them. Main thread only; goes before the session.
class StandingServices {
  public:
    struct Window {
        std::function<void()> present; ///< brings it to the front
        std::function<void(const std::vector<Path>& bundles)> lookAt;
        std::function<void(const std::vector<Message>&)> say; ///< why something asked for is not looked at
    };
    /// `bundle`: the one that the program runs from.
    StandingServices(Session& session, const OwnBundle& bundle, Window window);
    ~StandingServices();

    /// Looks again at what may have changed while the program was in the background.
    void refresh();
    /// The program goes on when its window is closed.
    bool isNeeded() const;

  private:
    void serve(const RequestInbox::Drained& asked);
    void serveCleanUps();

    Session& session_;
    OwnBundle bundle_;
    Window window_;
    std::unique_ptr<InboxWatcher> inbox_;
    std::unique_ptr<ServicesProvider> services_; ///< of a Mac
    Subscription extension_, following_;
};

} // namespace tidwen

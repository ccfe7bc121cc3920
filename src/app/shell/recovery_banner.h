#pragma once

#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "quarantine/manifest.h"
#include "removal/startup_chores.h"

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QBoxLayout;

namespace tidwen {

/// What is said above every screen of the runs that were interrupted: one at a time, what of it is at neither
/// place, the way back, and what that came to.
class RecoveryBanner final : public QWidget {
  public:
    /// What is passed outlives it.
    RecoveryBanner(StartupChores& chores, const Texts& texts, bool runsJobs,
                   std::function<void(const Path&)> reveal);

  private:
    void update();
    void showUndone(const UndoReport& undo);
    void showNotice(const RecoveryNotice& notice);
    /// Of the undo of the run that the notice is about.
    QStringList failures() const;
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    StartupChores& chores_;
    const Texts& texts_;
    bool runsJobs_; ///< not on a volume
    std::function<void(const Path&)> reveal_;
    QBoxLayout* notices_;
    Subscription following_;
};

} // namespace tidwen

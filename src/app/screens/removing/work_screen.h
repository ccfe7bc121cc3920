#pragma once

#include "base/path.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "removal/removal_phases.h"

#include <QWidget>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QPushButton;

namespace tidwen {

class AppIcons;
class PhaseList;
class ProgressRing;
class Tile;

/// Work that runs, a scan or a removal: what it is, how far it has come, and a way to end it.
class WorkScreen final : public QWidget {
  public:
    struct Words {
        QString title;
        QString stop;                    ///< what ends it
        QString note;                    ///< what is good to know meanwhile
        std::optional<double> part = {}; ///< of all that is done; of the step, if absent
        QString prompt = {};             ///< in place of the note while an administrator is asked, if any is
    };
    /// What is passed outlives it.
    WorkScreen(const Texts& texts, AppIcons& icons, UserEnvironment user, std::function<void()> stop);

    void show(const Words& words, const std::optional<StepProgress>& step);
    struct Application {
        std::string name;
        std::string bundleID;
        Path bundle;
    };
    /// Of a removal; hidden while there are none.
    void showPhases(const std::vector<RemovalPhase>& phases);
    /// As many as a row of icons shows.
    static constexpr std::size_t mostApplications = 6; // fit into the least window
    /// What it works on; those at which it is not at work now are faint.
    void showApplications(const std::vector<Application>& applications, const Path& atWork);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    const Texts& texts_;
    UserEnvironment user_;
    AppIcons& icons_;
    std::vector<Tile*> tiles_;
    ProgressRing* ring_;
    QLabel* title_;
    QLabel* step_;
    PhaseList* phases_;
    QLabel* note_;
    QPushButton* stop_;
};

} // namespace tidwen

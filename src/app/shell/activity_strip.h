#pragma once

#include "base/observable.h"
#include "base/step_progress.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "program/session_models.h"

#include <QString>
#include <QWidget>
#include <vector>

class QLabel;
class QPushButton;

namespace tidwen {

/// How far the recovery at the start, or an undo outside of the history, has come, above the screen that
/// stays usable meanwhile, and a way to stop it. Nothing while none of them runs.
class ActivityStrip final : public QWidget {
  public:
    /// `models` and `texts` outlive it.
    ActivityStrip(SessionModels& models, const Texts& texts, UserEnvironment user);

  private:
    void update();
    QString choreWords(StepProgress step) const;
    void stop();

    SessionModels& models_;
    const Texts& texts_;
    UserEnvironment user_;
    QLabel* step_;
    QPushButton* stop_;
    std::vector<Subscription> following_;
};

} // namespace tidwen

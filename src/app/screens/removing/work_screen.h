#pragma once

#include "base/step_progress.h"
#include "base/texts.h"
#include "platform/user_environment.h"

#include <QWidget>
#include <functional>
#include <optional>

class QLabel;
class QPushButton;

namespace tidwen {

class ProgressRing;

/// Work that runs, a scan or a removal: what it is, how far it has come, and a way to end it.
class WorkScreen final : public QWidget {
  public:
    struct Words {
        QString title;
        QString stop; ///< what ends it
        QString note; ///< what is good to know meanwhile
    };
    WorkScreen(const Texts& texts, UserEnvironment user, std::function<void()> stop);

    void show(const Words& words, const std::optional<StepProgress>& step);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    const Texts& texts_;
    UserEnvironment user_;
    ProgressRing* ring_;
    QLabel* title_;
    QLabel* step_;
    QLabel* note_;
    QPushButton* stop_;
};

} // namespace tidwen

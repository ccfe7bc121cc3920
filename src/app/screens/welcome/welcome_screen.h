#pragma once

#include "base/texts.h"

#include <QWidget>
#include <functional>

class QLabel;

namespace tidwen {

/// The first thing that is seen while no Mac is open.
class WelcomeScreen final : public QWidget {
  public:
    struct Actions {
        std::function<void()> open;
        std::function<void()> sample;
    };
    WelcomeScreen(const Texts& texts, Actions actions);

    /// Why nothing could be opened, or what runs; empty: nothing to say.
    void say(const QString& words);
    void setBusy(bool isBusy);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QWidget* choices_;
    QLabel* said_;
};

} // namespace tidwen

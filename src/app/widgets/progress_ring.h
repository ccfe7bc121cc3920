#pragma once

#include <QWidget>

namespace tidwen {

/// How far work has come, as a ring that fills.
class ProgressRing final : public QWidget {
  public:
    ProgressRing();
    void show(double part); ///< 0 to 1

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    double part_ = 0;
};

} // namespace tidwen

#pragma once

#include <QWidget>

namespace tidwen {

/// Lies over the window while something is dragged above it, and says what a drop would do.
class DropVeil final : public QWidget {
  public:
    explicit DropVeil(QWidget* window);
    void show(const QString& words);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString words_;
};

} // namespace tidwen

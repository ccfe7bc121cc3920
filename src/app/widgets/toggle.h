#pragma once

#include <QAbstractButton>

namespace tidwen {

/// A switch that takes effect at once.
class Toggle final : public QAbstractButton {
  public:
    /// `name`: what it switches, for a screen reader.
    explicit Toggle(const QString& name);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace tidwen

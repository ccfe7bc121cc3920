#pragma once

#include <QScrollArea>

namespace tidwen {

/// Holds a widget that is as large as this, and scrolls where that is less than the widget needs: large texts
/// in a small window.
class Scrolled final : public QScrollArea {
  public:
    /// Takes it over. It has a layout, and keys for this go to it.
    explicit Scrolled(QWidget* content);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fit();
};

/// Lays a screen out: the footer is always there, and what is above it scrolls where a low window has not
/// room for all of it.
void layOut(QWidget& screen, QWidget* content, QWidget* footer);

} // namespace tidwen

#pragma once

#include <QString>
#include <QWidget>

class QBoxLayout;
class QLabel;

namespace tidwen {

/// The upper edge of a screen: its title, a line about it, and controls at the far side.
class ScreenHeader final : public QWidget {
  public:
    explicit ScreenHeader(const QString& title);

    void setTitle(const QString& title);
    void setLine(const QString& line);
    void addControl(QWidget* control);
    void addLeading(QWidget* widget);

  private:
    QBoxLayout* layout_;
    QLabel* title_;
    QLabel* line_;
};

} // namespace tidwen

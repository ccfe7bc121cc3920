#pragma once

#include <QString>
#include <QWidget>

class QBoxLayout;
class QLabel;

namespace tidwen {

/// The upper edge of a screen: its title, a line about it, and controls at the far side, or below these where
/// both do not fit beside each other.
class ScreenHeader final : public QWidget {
  public:
    explicit ScreenHeader(const QString& title);

    void setTitle(const QString& title);
    void setLine(const QString& line);
    void addControl(QWidget* control);
    void addLeading(QWidget* widget);

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void arrange();
    /// Of the words in one line each; long names are no reason to move the controls.
    int wishedWidth() const;

    QBoxLayout* layout_;
    QBoxLayout* leading_;
    QBoxLayout* controls_;
    QLabel* title_;
    QLabel* line_;
};

} // namespace tidwen

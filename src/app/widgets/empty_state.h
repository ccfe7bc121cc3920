#pragma once

#include <QString>
#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

namespace tidwen {

/// What stands in place of a list that has nothing to show, is on its way or could not be had.
class EmptyState final : public QWidget {
  public:
    explicit EmptyState(const QString& icon);

    void setIcon(const QString& icon);
    void say(const QString& title, const QString& sentence);
    /// The one thing to do about it; without words there is none.
    void offer(const QString& words, std::function<void()> act = {});

  protected:
    void focusInEvent(QFocusEvent* event) override;

  private:
    QLabel* picture_;
    QLabel* title_;
    QLabel* sentence_;
    QPushButton* action_;
    std::function<void()> act_;
};

} // namespace tidwen

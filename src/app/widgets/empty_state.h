#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace tidwen {

/// What stands in place of a list that has nothing to show, is on its way or could not be had.
class EmptyState final : public QWidget {
  public:
    explicit EmptyState(const QString& icon);

    void say(const QString& title, const QString& sentence);

  private:
    QLabel* title_;
    QLabel* sentence_;
};

} // namespace tidwen

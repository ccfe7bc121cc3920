#pragma once

#include "app/style/metrics.h"

#include <QAbstractButton>

namespace tidwen {

/// A large button with an icon, words, and a sentence about them.
class ChoiceCard final : public QAbstractButton {
  public:
    ChoiceCard(QString icon, const QString& title, const QString& sentence);
    QSize sizeHint() const override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    static int edge();
    static int titleTop();
    static int heightOf(Type type, const QString& words);

    QString icon_;
    QString sentence_;
};

} // namespace tidwen

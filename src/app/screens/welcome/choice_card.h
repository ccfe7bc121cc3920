#pragma once

#include <QAbstractButton>

namespace tidwen {

/// A large button with an icon, words, and a sentence about them.
class ChoiceCard final : public QAbstractButton {
  public:
    ChoiceCard(QString icon, const QString& title, const QString& sentence);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString icon_;
    QString sentence_;
};

} // namespace tidwen

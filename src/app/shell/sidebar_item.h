#pragma once

#include <QAbstractButton>

namespace tidwen {

/// One line of the sidebar: an icon, words, and a count or a second line.
class SidebarItem final : public QAbstractButton {
  public:
    SidebarItem(QString icon, const QString& title);

    void setCount(const QString& count);
    void setSecondLine(const QString& line); ///< makes it a tile
    /// A dot says that something is missing, and these words what; none: nothing is.
    void warn(const QString& words);
    void setNarrow(bool isNarrow);
    QSize sizeHint() const override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QString icon_;
    QString count_;
    QString second_;
    QString warning_;
    bool isNarrow_ = false;
};

} // namespace tidwen

#pragma once

#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <functional>

class QBoxLayout;

namespace tidwen {

/// A question over a veil inside the window: it keeps the focus, Escape cancels. It deletes itself when it is
/// closed and gives the focus back. A Return that is pressed without a pause does not answer it.
class Sheet : public QWidget {
  public:
    /// `name` is what a screen reader calls it.
    Sheet(QWidget* window, const QString& name, int width = 480);

    QBoxLayout& content() { return *content_; }
    /// Its name as the title, and paragraphs below it.
    void addWords(const QStringList& paragraphs);
    /// A row at the end for the buttons that answer it.
    QBoxLayout& addAnswers();
    /// Called when it was closed without an answer.
    std::function<void()> onCancel;
    /// Escape does not close it: nothing can go on below until what it tells of has ended.
    bool stays = false;
    void open();
    void close();
    void cancel();
    /// The sheet that has the keys of a window; null while none is open.
    static const QWidget* topmost(const QWidget& window);

  protected:
    bool focusNextPrevChild(bool next) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void keepFocus(QWidget* focused);

    bool wasSeen_ = false;
    QWidget* panel_ = nullptr;
    QBoxLayout* content_;
    QPointer<QWidget> before_; ///< had the focus, or asked for it meanwhile
};

} // namespace tidwen

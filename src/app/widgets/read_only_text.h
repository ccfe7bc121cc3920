#pragma once

#include <QPlainTextEdit>
#include <QStringList>

namespace tidwen {

/// Lines to read, scroll and copy, of a fixed height in design pixels. Tab passes on from it, and it shows
/// that it has the focus.
class ReadOnlyText final : public QPlainTextEdit {
  public:
    ReadOnlyText(const QStringList& lines, const QString& accessibleName, int height);

  protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};

} // namespace tidwen

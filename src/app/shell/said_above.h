#pragma once

#include <QWidget>
#include <optional>
#include <string>

class QBoxLayout;

namespace tidwen {

/// The lines above a screen: why something failed, as long as that is so, and what was said, until it is
/// dismissed.
class SaidAbove final : public QWidget {
  public:
    explicit SaidAbove(QString dismiss);

    void say(const QString& words);
    /// Takes back what was said.
    void fallSilent();
    /// Nothing for an error that is over. The same again changes nothing.
    void showError(const std::optional<std::string>& error);
    bool isErrorDismissed() const;
    void dismissError();

  private:
    QString dismiss_;
    QBoxLayout* errors_;
    QBoxLayout* said_;
    std::optional<std::string> shownError_;
};

} // namespace tidwen

#pragma once

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "base/observable.h"
#include "base/texts.h"

#include <QWidget>
#include <string>
#include <vector>

class QBoxLayout;
class QLabel;

namespace tidwen {

/// One page of the settings: rows with words at the near side and a control at the far one.
class SettingsPage : public QWidget {
  public:
    /// `texts` outlives it.
    SettingsPage(const Texts& texts, const char* title);

  protected:
    /// Returns the second line, which says more; while it is empty it takes no room.
    QLabel* addRow(const QString& words, const QString& more, QWidget* control);
    QLabel* addParagraph(const QString& words, Role role = Role::text);
    static void say(QLabel& line, const QString& words);
    /// Everything above stays at the upper edge.
    void addStretch();
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;
    void follow(Subscription subscription) { following_.push_back(std::move(subscription)); }
    const Texts& texts() const { return texts_; }
    QBoxLayout& rows() { return *rows_; }

  private:
    const Texts& texts_;
    QBoxLayout* rows_;
    std::vector<Subscription> following_;
};

} // namespace tidwen

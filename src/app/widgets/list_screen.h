#pragma once

#include "app/widgets/row_delegate.h"
#include "app/widgets/row_view.h"
#include "base/observable.h"
#include "base/texts.h"

#include <QWidget>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class QBoxLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QStackedLayout;

namespace tidwen {

class EmptyState;
class ScreenHeader;

/// A screen around one list to choose from: a header with a search, notices, the list or what stands in its
/// place, and a footer with one main action.
class ListScreen : public QWidget {
  public:
    void search();
    void forgetSearch();

  protected:
    struct Look {
        QString title;
        const char* listName; ///< by which tests find the list
        const char* icon;
        RowDelegate* delegate; ///< taken over
    };
    /// `texts` outlive it; `remove` asks to remove what is chosen.
    ListScreen(const Texts& texts, const Look& look, std::function<void()> remove);

    virtual void searchFor(const QString& query) = 0;
    /// Shows what the model has now.
    virtual void refresh() = 0;
    /// What can be done with the current row. A menu that stays empty is not shown.
    virtual void fill(QMenu& /*menu*/) {}

    /// Refreshes when one of them changes.
    template<class... Property>
    void follow(Property&... properties) {
        (keep(properties.observe([this](const auto&) { refresh(); })), ...);
    }
    void keep(Subscription subscription) { following_.push_back(std::move(subscription)); }

    ScreenHeader& header() { return *header_; }
    RowView& view() { return *view_; }
    EmptyState& empty() { return *empty_; }
    void setModel(QAbstractItemModel& model);
    /// Before the search.
    void addControl(QWidget* control);
    void addBeside(QWidget* widget);
    void addButton(QWidget* button);
    QPushButton* addButton(const char* key, const char* name, std::function<void()> act);

    /// Why something may be missing, and what helps.
    struct Remedy {
        QString words;
        std::function<void()> act;
    };
    void showReasons(const QString& title, QStringList reasons, const Remedy& remedy);
    /// In the place of the list: that the search finds nothing. `clearFilters`: besides the search.
    void showNoMatch(const std::function<void()>& clearFilters = {});
    /// The list, or what stands in its place.
    void showList(bool isShown);
    /// Whether there is something to search and to choose from.
    void setUsable(bool isUsable);
    bool isUsable() const { return isUsable_; }
    /// `size`: of what is chosen; empty when that is not known. `hidden`: how many of them are not shown.
    void showChosen(std::size_t count, const QString& size, std::size_t hidden);
    /// The rows with a ticked box. Of a list that is not long.
    std::size_t countTicked() const;
    /// What the line about the chosen ones and the button that removes them are called.
    void nameFooter(const char* chosen, const char* remove);
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;
    const Texts& texts() const { return texts_; }

    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

  private:
    QWidget* makeContent(const Look& look);
    QWidget* makeFooter();
    void showMenu(const QPoint& at);

    const Texts& texts_;
    std::function<void()> removeChosen_;
    bool isUsable_ = true;
    ScreenHeader* header_ = nullptr;
    QLineEdit* search_ = nullptr;
    QBoxLayout* notices_ = nullptr;
    QStackedLayout* content_ = nullptr;
    RowView* view_ = nullptr;
    QBoxLayout* beside_ = nullptr;
    EmptyState* empty_ = nullptr;
    QWidget* footer_ = nullptr;
    QLabel* count_ = nullptr;
    QPushButton* remove_ = nullptr;
    std::vector<Subscription> following_;
};

} // namespace tidwen

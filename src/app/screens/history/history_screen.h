#pragma once

#include "app/models/history_items.h"
#include "app/models/history_list.h"
#include "base/observable.h"
#include "base/path.h"
#include "base/texts.h"
#include "platform/user_environment.h"
#include "quarantine/history.h"
#include "quarantine/history_model.h"
#include "quarantine/run_items.h"

#include <QTimer>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QBoxLayout;
class QLabel;
class QLineEdit;
class QListView;
class QPushButton;
class QStackedLayout;

namespace tidwen {

class AppIcons;
class EmptyState;
class ScreenHeader;

/// Past removals, the items of each, and the way back from them.
class HistoryScreen final : public QWidget {
  public:
    struct Actions {
        std::function<void(const Path&)> reveal;
        /// Acts while the Mac is still the one that is shown.
        std::function<void(std::function<void()>)> onceThere;
    };

    HistoryScreen(HistoryModel& history, AppIcons& icons, const Texts& texts, UserEnvironment user,
                  bool runsJobs, Actions actions);

    void search();

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* makeContent(AppIcons& icons);
    QWidget* makeFooter();
    const RemovalHistoryEntry* current() const;
    void undo();
    void askToDelete();
    void askToDeleteAll();
    /// Opens the question, unless nothing may be deleted, which is said then.
    void ask(const QString& title, const char* message, const char* button, std::function<void()> act);
    void showNotices();
    void undo(const Path& root, const ItemChoice& items);
    /// Nobody tells when another process has finished.
    void awaitTheOther();
    void update();
    void showEmpty();
    void showLine();
    void showItems();
    void updateFooter();
    QString text(const char* key, const std::vector<std::string>& arguments = {}) const;

    HistoryModel& history_;
    const Texts& texts_;
    UserEnvironment user_;
    bool runsJobs_; ///< not on a volume
    Actions actions_;
    HistoryList list_;
    HistoryItems itemList_;
    ScreenHeader* header_ = nullptr;
    QBoxLayout* notices_ = nullptr;
    QStackedLayout* content_ = nullptr;
    QListView* runs_ = nullptr;
    QListView* items_ = nullptr;
    EmptyState* empty_ = nullptr;
    QPushButton* undo_ = nullptr;
    QPushButton* show_ = nullptr;
    QPushButton* delete_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* deleteAll_ = nullptr;
    QLineEdit* search_ = nullptr;
    QLabel* state_ = nullptr; ///< of the current run, where something is the matter with it
    QTimer again_;
    QString totals_;
    Path partlyUndone_; ///< the run of which single items were put back last
    Path currentRoot_;  ///< the run chosen here, which stays the current one when the list is read again
    std::vector<Subscription> following_;
};

} // namespace tidwen

#include "app/screens/settings/app_chooser_sheet.h"

#include "app/style/metrics.h"
#include "app/widgets/parts.h"
#include "app/widgets/search_field.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/text.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <algorithm>
#include <string>
#include <utility>

namespace tidwen {

namespace {

class AppChooser final : public Sheet {
  public:
    AppChooser(QWidget* window, const QString& title, const QString& choose, std::vector<SharedApp> apps,
               const Texts& texts, std::function<void(const InstalledApp&)> then)
        : Sheet(window, title), apps_(std::move(apps)), then_(std::move(then)) {
        content().addWidget(parts::paragraph(title, Type::sheet));
        search_ = searchField(words(texts, "orphans.search.placeholder"));
        search_->setObjectName(QStringLiteral("search applications"));
        connect(search_, &QLineEdit::textChanged, this, [this](const QString& query) { search(query); });
        content().addWidget(search_);
        list_ = makeList(title, texts.language());
        content().addWidget(list_);
        auto& answers = addAnswers();
        answers.addWidget(parts::button(words(texts, "confirm.cancelButton"), [this] { cancel(); }));
        choose_ = parts::primaryButton(choose, [this] { take(); });
        choose_->setObjectName(QStringLiteral("choose application"));
        answers.addWidget(choose_);
        connect(list_, &QListWidget::itemActivated, choose_, [this] { choose_->click(); });
        search({});
    }

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (leaveDown(*search_, *list_, *event) || typeInto(*search_, *event)) return;
        Sheet::keyPressEvent(event);
    }

  private:
    QListWidget* makeList(const QString& title, const std::string& language) {
        std::vector<std::pair<std::string, SharedApp>> keyed;
        keyed.reserve(apps_.size());
        for (auto& app : apps_)
            keyed.emplace_back(displayOrderKey(app->name, language), std::move(app));
        std::ranges::stable_sort(
            keyed, {}, [](const auto& each) -> const auto& { return each.first; });
        std::ranges::transform(keyed, apps_.begin(), [](auto& each) { return std::move(each.second); });
        auto* list = new QListWidget;
        list->setObjectName(QStringLiteral("applications to choose"));
        list->setAccessibleName(title);
        list->setUniformItemSizes(true);
        list->setFrameShape(QFrame::NoFrame);
        list->setFixedHeight(scaled(220));
        for (const auto& app : apps_)
            list->addItem(shown(app->name) + QStringLiteral("  ·  ") + shown(app->bundleID));
        return list;
    }

    /// The first that holds it becomes current.
    void search(const QString& query) {
        const auto sought = folded(trimmed(query.toStdString()));
        int first = -1;
        for (int i = 0; i < list_->count(); ++i) {
            const bool isFound =
                folded(list_->item(i)->text().toStdString()).find(sought) != std::string::npos;
            list_->setRowHidden(i, !isFound);
            if (isFound && first < 0) first = i;
        }
        list_->setCurrentRow(first);
        choose_->setEnabled(first >= 0);
    }

    void take() {
        const auto row = list_->currentRow();
        if (row < 0 || list_->isRowHidden(row)) return;
        const auto app = apps_[static_cast<std::size_t>(row)];
        const auto then = then_;
        close();
        then(*app);
    }

    std::vector<SharedApp> apps_; ///< in the order of the list
    std::function<void(const InstalledApp&)> then_;
    QLineEdit* search_ = nullptr;
    QListWidget* list_ = nullptr;
    QPushButton* choose_ = nullptr;
};

} // namespace

Sheet* openAppChooser(QWidget* window, const QString& title, const QString& choose,
                      std::vector<SharedApp> apps, const Texts& texts,
                      std::function<void(const InstalledApp&)> then) {
    auto* sheet = new AppChooser(window, title, choose, std::move(apps), texts, std::move(then));
    sheet->open();
    return sheet;
}

} // namespace tidwen

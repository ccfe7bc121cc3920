#include "app/screens/applications/tags_sheet.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/observable.h"
#include "base/texts.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <algorithm>
#include <optional>

namespace tidwen {

namespace {

class TagsSheet final : public Sheet {
  public:
    TagsSheet(QWidget* window, AppTags& tags, std::vector<std::string> bundleIDs, const QString& subject,
              const Texts& texts)
        : Sheet(window, words(texts, "tags.title %@", {subject.toStdString()})),
          tags_(tags),
          bundleIDs_(std::move(bundleIDs)),
          texts_(texts),
          following_(tags.changed.connect([this](const auto&) { show(); })) {
        content().addWidget(parts::paragraph(accessibleName(), Type::sheet));
        list_ = new QListWidget;
        list_->setObjectName(QStringLiteral("tags"));
        list_->setAccessibleName(accessibleName());
        list_->setFrameShape(QFrame::NoFrame);
        list_->setFixedHeight(scaled(170));
        list_->setSpacing(scaled(2));
        connect(list_, &QListWidget::itemChanged, this,
                [this](const QListWidgetItem* item) { change(*item); });
        content().addWidget(list_);
        content().addLayout(makeNewTag());
        said_ = parts::paragraph({}, Type::second, Role::look);
        said_->hide();
        content().addWidget(said_);
        auto* buttons = parts::row(nullptr);
        buttons->addStretch(1);
        buttons->addWidget(
            parts::primaryButton(words(texts_, "permissions.doneButton"), [this] { cancel(); }));
        content().addLayout(buttons);
        show();
    }

  protected:
    /// In the field, Return adds what is typed.
    void keyPressEvent(QKeyEvent* event) override {
        const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (isReturn && name_->hasFocus() && !name_->text().isEmpty()) return add();
        Sheet::keyPressEvent(event);
    }

  private:
    QBoxLayout* makeNewTag() {
        auto* row = parts::row(nullptr, scaled(6));
        name_ = new QLineEdit;
        name_->setObjectName(QStringLiteral("new tag"));
        name_->setPlaceholderText(words(texts_, "tags.new"));
        name_->setAccessibleName(words(texts_, "tags.new"));
        name_->setTextMargins(scaled(8), 0, scaled(8), 0);
        row->addWidget(name_, 1);
        auto* button = parts::button(words(texts_, "tags.add"), [this] { add(); });
        button->setObjectName(QStringLiteral("add tag"));
        row->addWidget(button);
        return row;
    }

    /// Of those shown: a tag may have been on some of them only.
    void show() {
        const QSignalBlocker quiet(list_);
        const auto current = list_->currentRow();
        list_->clear();
        for (const auto& tag : tags_.all()) {
            const auto carriers =
                std::ranges::count_if(bundleIDs_, [&](const auto& id) { return tags_.isTagged(id, tag); });
            auto* item = new QListWidgetItem(shown(tag), list_);
            item->setData(Qt::UserRole, QByteArray::fromStdString(tag));
            item->setCheckState(carriers == 0                        ? Qt::Unchecked
                                : carriers == std::ssize(bundleIDs_) ? Qt::Checked
                                                                     : Qt::PartiallyChecked);
        }
        list_->setCurrentRow(current);
        list_->setVisible(list_->count() > 0);
    }

    void change(const QListWidgetItem& item) {
        const bool isOn = item.checkState() == Qt::Checked;
        put(item.data(Qt::UserRole).toByteArray().toStdString(), isOn);
    }

    void add() {
        const auto tag = name_->text().toStdString();
        if (put(tag, true)) name_->clear();
    }

    bool put(const std::string& tag, bool isOn) {
        std::optional<AppTags::Refusal> refusal;
        const auto done = isOn ? tags_.add(bundleIDs_, tag) : tags_.remove(bundleIDs_, tag);
        const bool isAsWished = done || done.error() == AppTags::Refusal::thereAlready
                                || done.error() == AppTags::Refusal::notThere;
        if (!isAsWished) refusal = done.error();
        said_->setVisible(refusal.has_value());
        said_->setText(!refusal ? QString()
                       : *refusal == AppTags::Refusal::unusableName
                           ? words(texts_, "cli.tags.unusable %@", {tag})
                           : words(texts_, "settings.store.failed"));
        show();
        return !refusal;
    }

    AppTags& tags_;
    std::vector<std::string> bundleIDs_;
    const Texts& texts_;
    QListWidget* list_ = nullptr;
    QLineEdit* name_ = nullptr;
    QLabel* said_ = nullptr;
    Subscription following_;
};

} // namespace

Sheet* openTagsSheet(QWidget* window, AppTags& tags, const std::vector<std::string>& bundleIDs,
                     const QString& subject, const Texts& texts) {
    auto* sheet = new TagsSheet(window, tags, bundleIDs, subject, texts);
    sheet->open();
    sheet->findChild<QLineEdit*>(QStringLiteral("new tag"))->setFocus();
    return sheet;
}

} // namespace tidwen

#include "app/screens/permissions/permissions_view.h"

#include "app/models/app_icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/card_row_delegate.h"
#include "app/widgets/notice.h"
#include "app/widgets/parts.h"
#include "app/widgets/row_view.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "scan/permissions/permission_audit.h"
#include "system/permissions_sheet.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <optional>
#include <string>

namespace tidwen {

PermissionsView::PermissionsView(QWidget* window, std::unique_ptr<PermissionsSheet> sheet, AppIcons& icons,
                                 const Texts& texts, Pane pane)
    : Sheet(window, words(texts, "permissions.sheet.title %@", {shown(sheet->app().name).toStdString()}),
            520),
      sheet_(std::move(sheet)),
      texts_(texts),
      pane_(std::move(pane)),
      list_(*sheet_, texts) {
    makeContent(icons);
    const auto follow = [this](auto& property) {
        following_.push_back(property.observe([this](const auto&) { update(); }));
    };
    follow(sheet_->audit);
    follow(sheet_->revoking);
    follow(sheet_->errorText);
    following_.push_back(sheet_->rows.changed.connect([this](const auto&) { update(); }));
    sheet_->load();
    update();
}

void PermissionsView::makeContent(AppIcons& icons) {
    const auto& app = sheet_->app();
    auto* line = parts::row(nullptr, scaled(14));
    auto* tile = new Tile(44, icons);
    tile->show(shown(app.name), app.bundleID, app.bundleURL);
    line->addWidget(tile);
    auto* titles = parts::column(nullptr, scaled(2));
    titles->addWidget(parts::paragraph(accessibleName(), Type::sheet));
    titles->addWidget(parts::paragraph(text("permissions.sheet.subtitle"), Type::second, Role::second));
    line->addLayout(titles, 1);
    content().addLayout(line);
    notices_ = parts::column(nullptr, scaled(6));
    content().addLayout(notices_);
    content().addWidget(none_ = parts::paragraph({}, Type::body, Role::second));
    view_ = new RowView(new CardRowDelegate(CardRowDelegate::Boxes::none, icons));
    view_->setObjectName(QStringLiteral("permissions"));
    view_->setAccessibleName(accessibleName());
    view_->setModel(&list_);
    view_->setRootIndex(list_.index(0, 0));
    view_->onControl = [this](const QModelIndex& index) {
        if (const auto* row = list_.row(index)) askToRevoke({row->grant});
    };
    connect(view_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { update(); });
    content().addWidget(view_);
    auto* buttons = parts::row(nullptr, scaled(6));
    revokeAll_ = parts::button(text("permissions.revokeAll"), [this] {
        if (const auto& audit = sheet_->audit.get()) askToRevoke(audit->grants);
    });
    revokeAll_->setObjectName(QStringLiteral("revoke all"));
    revoke_ = parts::button(text("permissions.sheet.revoke"), [this] {
        if (const auto* row = list_.row(view_->currentIndex())) askToRevoke({row->grant});
    });
    revoke_->setObjectName(QStringLiteral("revoke"));
    revoke_->setAccessibleName(text("permissions.revokeButton"));
    auto* done = parts::primaryButton(text("permissions.doneButton"), [this] { cancel(); });
    done->setObjectName(QStringLiteral("permissions done"));
    buttons->addWidget(revokeAll_);
    buttons->addStretch(1);
    buttons->addWidget(revoke_);
    buttons->addWidget(done);
    content().addLayout(buttons);
}

void PermissionsView::update() {
    constexpr int mostRows = 6;
    const auto& audit = sheet_->audit.get();
    const int rows = list_.rowCount(list_.index(0, 0));
    none_->setText(text(audit ? "permissions.sheet.none" : "permissions.loading"));
    none_->setVisible(rows == 0 && (!audit || audit->unreadable.empty()));
    view_->setVisible(rows > 0);
    view_->setFixedHeight(qMin(rows, mostRows) * view_->sizeHintForRow(0) + 2);
    const auto* current = list_.row(view_->currentIndex());
    revoke_->setVisible(rows > 0);
    revoke_->setEnabled(current && !current->isRevoking);
    revokeAll_->setVisible(rows > 1);
    revokeAll_->setEnabled(sheet_->revoking.get().empty());
    parts::clear(*notices_);
    if (const auto& error = sheet_->errorText.get())
        notices_->addWidget(makeNotice(NoticeTone::caution, {shown(texts_.text(*error))}));
    if (audit && !audit->unreadable.empty())
        notices_->addWidget(makeNotice(
            NoticeTone::caution,
            {text(pane_.words.isEmpty() ? "permissions.unreadable" : "permissions.sheet.systemSettings"),
             {},
             pane_.words},
            pane_.words.isEmpty() ? std::function<void()>() : pane_.open));
}

void PermissionsView::askToRevoke(const std::vector<PermissionGrant>& grants) {
    if (grants.empty()) return;
    const auto app = shown(sheet_->app().name).toStdString();
    QStringList names;
    for (const auto& grant : grants)
        names << shown(permissionTitle(grant.service, texts_));
    const auto title = grants.size() > 1 ? text("permissions.ask.all %@", {app})
                                         : text("permissions.ask %@ %@", {names.front().toStdString(), app});
    auto* question = new Sheet(parentWidget(), title, 440);
    QStringList body = {text("permissions.ask.body")};
    if (grants.size() > 1) body.prepend(names.join(QStringLiteral(", ")));
    question->addWords(body);
    auto& answers = question->addAnswers();
    answers.addWidget(parts::primaryButton(text("confirm.cancelButton"), [question] { question->cancel(); }));
    auto* yes =
        parts::button(text("permissions.sheet.revoke"), [question, chosen = grants, self = QPointer(this)] {
            question->close();
            if (self) self->revoke(chosen);
        });
    yes->setObjectName(QStringLiteral("revoke now"));
    answers.addWidget(yes);
    question->open();
}

void PermissionsView::revoke(std::vector<PermissionGrant> grants) {
    if (grants.empty()) return;
    const auto next = grants.front();
    grants.erase(grants.begin());
    sheet_->errorText.set(std::nullopt);
    sheet_->revoke(next, [this, rest = std::move(grants)] {
        if (!sheet_->errorText.get()) revoke(rest);
    });
}

/// Return means what it means on the list's rows nowhere: the sheet's own button.
void PermissionsView::keyPressEvent(QKeyEvent* event) {
    const auto* row = list_.row(view_->currentIndex());
    const bool isDelete = event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace;
    if (isDelete && row && view_->hasFocus()) return askToRevoke({row->grant});
    Sheet::keyPressEvent(event);
}

QString PermissionsView::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

#include "app/screens/settings/trash_page.h"

#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/toggle.h"
#include "base/texts.h"
#include "platform/notifications.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tidwen {

TrashPage::TrashPage(UserSettings& settings, PermissionsModel* own, NotificationPermission& notifications,
                     const Texts& texts, std::function<void()> openPermissions)
    : SettingsPage(texts, "settings.trash.title"),
      settings_(settings),
      own_(own),
      notifications_(notifications) {
    addParagraph(text("settings.trash.body"), Role::second);
    if (own_)
        makeSwitch(std::move(openPermissions));
    else
        addParagraph(text("settings.trash.volume"), Role::second); // no switch that would do nothing
    addStretch();
}

void TrashPage::makeSwitch(std::function<void()> openPermissions) {
    watch_ = new Toggle(text("settings.general.trashToggle"));
    watch_->setObjectName(QStringLiteral("catchTrashedApps"));
    connect(watch_, &QAbstractButton::clicked, this,
            [this](bool isOn) { settings_.set("catchTrashedApps", isOn ? "true" : "false"); });
    addRow(text("settings.general.trashToggle"), text("settings.trash.login"), watch_);
    needs_ = addParagraph({}, Role::look);
    permissions_ = parts::button(text("settings.trash.openPermissions"), std::move(openPermissions));
    auto* line = parts::row(nullptr);
    line->addWidget(permissions_);
    line->addStretch(1);
    rows().addLayout(line);
    follow(settings_.changed.connect([this] { showPresent(); }));
    follow(notifications_.state.observe([this](const auto&) { showPresent(); }));
    follow(own_->fullDiskAccess.observe([this](const auto&) { showPresent(); }));
    notifications_.refresh();
    own_->refresh();
    showPresent();
}

void TrashPage::showPresent() {
    const bool isOn = settings_.preferences().catchTrashedApps.get();
    watch_->setChecked(isOn);
    watch_->setToolTip(text(isOn ? "settings.trash.turnOff" : "settings.trash.turnOn"));
    watch_->setEnabled(!settings_.problem.get());
    QStringList needs;
    if (own_->fullDiskAccess.get() == FullDiskAccessProbe::Status::denied)
        needs << text("settings.trash.needsFullDisk");
    if (notifications_.state.get() != NotificationState::allowed)
        needs << text("settings.trash.needsNotifications");
    say(*needs_, isOn ? needs.join(QLatin1Char(' ')) : QString());
    permissions_->setVisible(!needs_->text().isEmpty());
}

} // namespace tidwen

#include "app/screens/settings/permissions_page.h"

#include "app/widgets/parts.h"
#include "base/texts.h"
#include "platform/notifications.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>

namespace tidwen {

namespace {

constexpr int refreshEvery = 2000; ///< milliseconds: people come back from System Settings

const char* stateKey(NotificationState state) {
    switch (state) {
    case NotificationState::notAsked:
        return "settings.permissions.notifications.notAsked";
    case NotificationState::asking:
        return "settings.permissions.notifications.asking";
    case NotificationState::allowed:
        return "settings.permissions.notifications.allowed";
    case NotificationState::denied:
        return "settings.permissions.notifications.denied";
    case NotificationState::unavailable:
        break;
    }
    return "settings.permissions.notifications.unavailable";
}

} // namespace

const char* stateKey(FullDiskAccessProbe::Status status) {
    switch (status) {
    case FullDiskAccessProbe::Status::granted:
        return "settings.permissions.fullDisk.granted";
    case FullDiskAccessProbe::Status::denied:
        return "settings.permissions.fullDisk.denied";
    case FullDiskAccessProbe::Status::indeterminate:
        break;
    }
    return "settings.permissions.fullDisk.indeterminate";
}

PermissionsPage::PermissionsPage(PermissionsModel* own, NotificationPermission& notifications,
                                 const Texts& texts, const OpenPane& open)
    : SettingsPage(texts, "settings.tab.permissions"), own_(own), notifications_(notifications) {
    using Pane = SystemSettingsLauncher::Pane;
    const auto opens = [open](Pane pane) { return [open, pane] { open(pane); }; };
    ofRunningMac_.push_back(addPermission("settings.permissions.fullDisk", fullDisk_,
                                          "settings.permissions.open", opens(Pane::fullDiskAccess)));
    ask_ = addPermission("settings.permissions.notifications", allowed_, "settings.permissions.ask",
                         [this] { notifications_.request(); });
    ofRunningMac_.push_back(addPermission("settings.permissions.finder", finder_, "settings.permissions.open",
                                          opens(Pane::loginItemsAndExtensions)));
    addStretch();
    follow(notifications_.state.observe([this](const auto&) { showPresent(); }));
    if (own_) {
        follow(own_->fullDiskAccess.observe([this](const auto&) { showPresent(); }));
        follow(own_->finderExtension.observe([this](const auto&) { showPresent(); }));
    }
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this] {
        if (isVisible()) refresh();
    });
    timer->start(refreshEvery);
    refresh();
    showPresent();
}

QPushButton* PermissionsPage::addPermission(const char* title, QLabel*& state, const char* action,
                                            std::function<void()> act) {
    auto* button = parts::button(text(action), std::move(act));
    button->setAccessibleName(text(title) + QStringLiteral(": ") + button->text());
    state = addRow(text(title), {}, button);
    return button;
}

void PermissionsPage::refresh() {
    notifications_.refresh();
    if (own_) own_->refresh();
}

void PermissionsPage::showPresent() {
    say(*fullDisk_, text(own_ ? stateKey(own_->fullDiskAccess.get()) : "settings.permissions.volume"));
    say(*finder_, text(!own_                         ? "settings.permissions.volume"
                       : own_->finderExtension.get() ? "settings.permissions.finder.on"
                                                     : "settings.permissions.finder.off"));
    for (auto* button : ofRunningMac_)
        button->setVisible(own_ != nullptr);
    const auto state = notifications_.state.get();
    say(*allowed_, text(stateKey(state)));
    ask_->setVisible(state == NotificationState::notAsked);
}

} // namespace tidwen

#include "app/screens/onboarding/onboarding_sheet.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/toggle.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "platform/workspace.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>

#include <string>

namespace tidwen {

namespace {

constexpr int refreshEvery = 2000; ///< milliseconds: people come back from System Settings

Panel* card(QBoxLayout*& row) {
    auto* panel = new Panel({.ground = Role::window});
    row = parts::row(panel, scaled(12));
    row->setContentsMargins(scaled(14), scaled(12), scaled(14), scaled(12));
    return panel;
}

} // namespace

OnboardingSheet::OnboardingSheet(QWidget* window, Services services, const Texts& texts)
    : Sheet(window, words(texts, "onboarding.title"), 520), services_(std::move(services)), texts_(texts) {
    steps_ = new QStackedWidget;
    steps_->addWidget(makeStep("tidwen", "onboarding.what.title",
                               {"onboarding.what.body", "onboarding.what.undo"}, nullptr));
    steps_->addWidget(
        makeStep("shield", "onboarding.access.title", {"onboarding.access.body"}, makeAccess()));
    steps_->addWidget(makeStep("trash", "onboarding.trash.title", {"settings.trash.body"}, makeTrash()));
    content().addWidget(steps_);
    content().addWidget(makeButtons());
    following_.push_back(services_.own.settings().changed.connect([this] { showPresent(); }));
    if (services_.permissions) {
        following_.push_back(
            services_.permissions->fullDiskAccess.observe([this](const auto&) { showPresent(); }));
        auto* timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this] { services_.permissions->refresh(); });
        timer->start(refreshEvery);
        services_.permissions->refresh();
    }
    showPresent();
    go(0);
}

QWidget* OnboardingSheet::makeStep(const char* icon, const char* title,
                                   const std::vector<const char*>& paragraphs, QWidget* more) {
    auto* step = new QWidget;
    auto* layout = parts::column(step, scaled(10));
    auto* picture = parts::picture(QString::fromLatin1(icon), Role::accent, 56);
    auto* heading = parts::paragraph(text(title), Type::title);
    layout->addWidget(picture);
    layout->addSpacing(scaled(4));
    layout->addWidget(heading);
    for (const auto* paragraph : paragraphs)
        layout->addWidget(parts::paragraph(text(paragraph), Type::body, Role::second));
    if (more) layout->addWidget(more);
    layout->addStretch(1);
    return step;
}

QWidget* OnboardingSheet::makeAccess() {
    QBoxLayout* row = nullptr;
    auto* panel = card(row);
    access_ = parts::paragraph({});
    row->addWidget(access_, 1);
    auto* open = parts::button(text("settings.permissions.open"),
                               [this] { services_.openPane(SystemSettingsLauncher::Pane::fullDiskAccess); });
    open->setVisible(services_.permissions != nullptr);
    row->addWidget(open);
    return panel;
}

QWidget* OnboardingSheet::makeTrash() {
    QBoxLayout* row = nullptr;
    auto* panel = card(row);
    if (!services_.permissions) { // a volume: nothing here watches its Trash
        row->addWidget(parts::paragraph(text("settings.trash.volume")), 1);
        return panel;
    }
    row->addWidget(parts::paragraph(text("settings.general.trashToggle")), 1);
    watch_ = new Toggle(text("settings.general.trashToggle"));
    connect(watch_, &QAbstractButton::clicked, this, [this](bool isOn) {
        services_.own.settings().set("catchTrashedApps", isOn ? "true" : "false");
        if (isOn) services_.own.notifications().request();
    });
    row->addWidget(watch_);
    return panel;
}

QWidget* OnboardingSheet::makeButtons() {
    auto* buttons = new QWidget;
    auto* row = parts::row(buttons, scaled(6));
    count_ = parts::label({}, Type::second, Role::second);
    back_ = parts::button(text("onboarding.back"), [this] { go(steps_->currentIndex() - 1); });
    later_ = parts::button(text("onboarding.later"), [this] { next(); });
    next_ = parts::primaryButton({}, [this] { next(); });
    next_->setObjectName(QStringLiteral("next step"));
    row->addWidget(count_);
    row->addStretch(1);
    for (auto* button : {back_, later_, next_})
        row->addWidget(button);
    return buttons;
}

void OnboardingSheet::go(int step) {
    steps_->setCurrentIndex(step);
    const bool isLast = step + 1 == steps_->count();
    count_->setText(
        text("onboarding.step %lld %lld", {std::to_string(step + 1), std::to_string(steps_->count())}));
    back_->setVisible(step > 0);
    later_->setVisible(step > 0);
    next_->setText(text(isLast ? "onboarding.done" : "onboarding.continue"));
    next_->setFocus();
}

void OnboardingSheet::next() {
    if (steps_->currentIndex() + 1 < steps_->count()) return go(steps_->currentIndex() + 1);
    services_.own.settings().set("hasCompletedOnboarding", "true");
    cancel();
}

void OnboardingSheet::showPresent() {
    if (watch_) watch_->setChecked(services_.own.settings().preferences().catchTrashedApps.get());
    if (watch_) watch_->setEnabled(!services_.own.settings().problem.get());
    access_->setText(text(!services_.permissions ? "settings.permissions.volume"
                                                 : stateKey(services_.permissions->fullDiskAccess.get())));
}

QString OnboardingSheet::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

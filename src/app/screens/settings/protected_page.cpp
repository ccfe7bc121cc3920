#include "app/screens/settings/protected_page.h"

#include "app/screens/settings/app_chooser_sheet.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/letter_case.h"
#include "base/text.h"
#include "base/texts.h"

#include <QBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace tidwen {

ProtectedPage::ProtectedPage(UserSettings& settings, std::vector<SharedApp> installed, const Texts& texts)
    : SettingsPage(texts, "settings.tab.protected"), settings_(settings), installed_(std::move(installed)) {
    addParagraph(text("settings.protected.body"), Role::second);
    list_ = new QListWidget;
    list_->setObjectName(QStringLiteral("protected"));
    list_->setAccessibleName(text("settings.tab.protected"));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setSpacing(scaled(2));
    none_ = parts::paragraph(text("settings.protected.none"));
    rows().addWidget(none_);
    rows().addWidget(list_, 1);
    addStretch();
    add_ = new QPushButton(text("settings.protected.add"));
    add_->setObjectName(QStringLiteral("protect application"));
    add_->setAutoDefault(false);
    connect(add_, &QPushButton::clicked, this, [this] { choose(); });
    remove_ = parts::button(text("drop.tile.unprotect"), [this] {
        if (const auto* item = list_->currentItem())
            settings_.setProtected(item->data(Qt::UserRole).toByteArray().toStdString(), false);
    });
    remove_->setObjectName(QStringLiteral("unprotect"));
    auto* line = parts::row(nullptr, scaled(6));
    line->addWidget(add_);
    line->addWidget(remove_);
    line->addStretch(1);
    rows().addLayout(line);
    connect(list_, &QListWidget::currentItemChanged, this,
            [this] { remove_->setEnabled(list_->currentItem() && !settings_.problem.get()); });
    follow(settings_.changed.connect([this] { showPresent(); }));
    showPresent();
}

void ProtectedPage::showPresent() {
    list_->clear();
    for (const auto& bundleID : settings_.protectedApps().bundleIDs()) {
        auto* item = new QListWidgetItem(nameOf(bundleID), list_);
        item->setData(Qt::UserRole, QByteArray::fromStdString(bundleID));
    }
    none_->setVisible(list_->count() == 0);
    list_->setVisible(list_->count() > 0);
    add_->setEnabled(!installed_.empty() && !settings_.problem.get());
    remove_->setEnabled(false);
    remove_->setVisible(list_->count() > 0);
}

void ProtectedPage::choose() {
    std::vector<SharedApp> others;
    std::ranges::copy_if(installed_, std::back_inserter(others), [this](const SharedApp& app) {
        return !settings_.protectedApps().contains(app->bundleID);
    });
    openAppChooser(window(), text("settings.protected.add"), text("drop.tile.protect"), std::move(others),
                   texts(), [this](const InstalledApp& app) { settings_.setProtected(app.bundleID, true); });
}

QString ProtectedPage::nameOf(const std::string& bundleID) const {
    const auto app = std::ranges::find_if(installed_, [&](const SharedApp& each) {
        return lowercased(each->bundleID) == lowercased(bundleID);
    });
    return app == installed_.end() ? shown(bundleID)
                                   : shown((*app)->name) + QStringLiteral("  ·  ") + shown(bundleID);
}

} // namespace tidwen

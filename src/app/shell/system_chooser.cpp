#include "app/shell/system_chooser.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/background_step.h"
#include "program/this_mac.h"
#include "settings/recent_volumes.h"

#include <QBoxLayout>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

namespace fs = std::filesystem;

SystemChooser::SystemChooser(QWidget* window, Services services, Reactions reactions)
    : QObject(window),
      window_(window),
      services_(services),
      reactions_(std::move(reactions)),
      menu_(new QMenu(window)) {
    menu_->setObjectName(QStringLiteral("systems"));
    connect(menu_, &QMenu::aboutToShow, this, [this] { fill(); });
    fill(); // so that its size is known before it opens
}

void SystemChooser::fill() {
    menu_->clear();
    const auto add = [this](const char* icon, const char* key, auto act) {
        connect(menu_->addAction(controlIcon(QString::fromLatin1(icon), Role::text), text(key)),
                &QAction::triggered, this, act);
    };
    if (const auto running = thisMac())
        add("applications", "window.thisMac", [this, running] { openRunning(running); });
    addRecent(services_.recent.all());
    menu_->addSeparator();
    if (open_ && open_->home)
        add("disk", "window.system.anotherHome", [this, folder = open_->folder] { open(folder, {}); });
    add("folder", "window.menu.open", [this] { chooseVolume(); });
    add("leaf", "window.menu.sample", [this] { openSample(); });
    add("leaf", "window.menu.sampleFolder", [this] { chooseSampleFolder(); });
}

void SystemChooser::addRecent(const std::vector<RecentVolume>& volumes) {
    if (volumes.empty()) return;
    menu_->addSection(text("window.system.recent"));
    QList<QPointer<QAction>> actions;
    for (const auto& volume : volumes) {
        auto words = shown(fs::path(volume.folder).filename().string());
        if (volume.home) words += QStringLiteral(" · ") + shown(fs::path(*volume.home).filename().string());
        auto* action = menu_->addAction(controlIcon(QStringLiteral("disk"), Role::text),
                                        words.replace(QLatin1Char('&'), QStringLiteral("&&")));
        action->setToolTip(shown(volume.folder).toHtmlEscaped());
        connect(action, &QAction::triggered, this, [this, volume] { open(volume.folder, volume.home); });
        actions << action;
    }
    menu_->setToolTipsVisible(true);
    markMissing(volumes, actions);
}

/// A disk may be slow to answer, so the menu does not wait for it.
void SystemChooser::markMissing(const std::vector<RecentVolume>& volumes,
                                const QList<QPointer<QAction>>& actions) {
    inBackground(
        *this, alive_, services_.background, services_.main,
        [volumes] {
            std::vector<bool> areThere;
            areThere.reserve(volumes.size());
            std::error_code failure;
            for (const auto& volume : volumes)
                areThere.push_back(fs::is_directory(fs::path(volume.folder) / "Users", failure));
            return areThere;
        },
        [actions](const SystemChooser& self, const std::vector<bool>& areThere) {
            for (std::size_t i = 0; i < areThere.size(); ++i) {
                const auto& action = actions[static_cast<qsizetype>(i)];
                if (!action || areThere[i]) continue;
                action->setEnabled(false);
                action->setText(self.text("window.system.missing %@", {action->text().toStdString()}));
            }
        });
}

void SystemChooser::openRunning(const MacOpener::OpenMac& running) {
    if (!reactions_.mayLeave()) return;
    reactions_.begins(text("window.opening"));
    services_.opener.openRunning(running, taken());
}

void SystemChooser::open(const fs::path& folder, const std::optional<std::string>& home) {
    if (!reactions_.mayLeave()) return;
    reactions_.begins(text("window.opening"));
    services_.opener.open(folder, home, taken(folder));
}

void SystemChooser::openSample() {
    if (!reactions_.mayLeave()) return;
    reactions_.begins(text("window.sample.writing"));
    services_.opener.openSample(taken());
}

void SystemChooser::chooseVolume() {
    chooseFolder("window.menu.open", [this](const QString& folder) { open(folder.toStdString()); });
}

void SystemChooser::chooseSampleFolder() {
    chooseFolder("window.menu.sampleFolder", [this](const QString& above) {
        if (!reactions_.mayLeave()) return;
        const auto folder = fs::path(above.toStdString()) / "Tidwen Sample";
        reactions_.begins(text("window.sample.writing"));
        services_.opener.openSample(folder, taken(folder));
    });
}

void SystemChooser::chooseFolder(const char* title, std::function<void(const QString&)> then) {
    if (!reactions_.mayLeave()) return;
    auto* dialog = new QFileDialog(window_, text(title));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    connect(dialog, &QFileDialog::fileSelected, this,
            [then = std::move(then)](const QString& folder) { then(folder); });
    dialog->open();
}

MacOpener::Then SystemChooser::taken(fs::path folder) {
    return [this, number = ++asked_, folder = std::move(folder)](MacOpener::Result result) {
        if (number == asked_)
            take(std::move(result), folder);
        else
            drop(std::move(result));
    };
}

void SystemChooser::take(MacOpener::Result result, const fs::path& folder) {
    if (!result) {
        if (!result.error().homes.empty()) return chooseHome(folder, result.error().homes);
        return reactions_.refused(shown(services_.texts.text(result.error().why)));
    }
    if (!reactions_.mayLeave()) { // a removal may have begun meanwhile
        reactions_.refused({});
        return drop(std::move(result));
    }
    if (result->volume) services_.recent.remember(*result->volume);
    open_ = result->volume;
    reactions_.opened(std::move(*result));
}

/// Its sample may have to be removed from the disk.
void SystemChooser::drop(MacOpener::Result result) {
    services_.background.post([dropped = std::make_shared<MacOpener::Result>(std::move(result))] {});
}

/// Several people have a home on the volume.
void SystemChooser::chooseHome(const fs::path& folder, const std::vector<std::string>& homes) {
    reactions_.refused({});
    const auto title = text("window.homes.title %@", {folder.filename().string()});
    auto* sheet = new Sheet(window_, title);
    sheet->content().addWidget(parts::paragraph(title, Type::sheet));
    sheet->content().addWidget(parts::paragraph(text("window.homes.body"), Type::body, Role::second));
    auto* list = new QListWidget;
    list->setObjectName(QStringLiteral("homes"));
    list->setAccessibleName(title);
    list->setFixedHeight(scaled(140));
    for (const auto& home : homes) {
        auto* item = new QListWidgetItem(shown(home), list);
        item->setData(Qt::UserRole, QByteArray::fromStdString(home));
    }
    list->setCurrentRow(0);
    sheet->content().addWidget(list);
    auto* buttons = parts::row(nullptr, scaled(6));
    buttons->addStretch(1);
    buttons->addWidget(parts::button(text("confirm.cancelButton"), [sheet] { sheet->cancel(); }));
    auto* choose = parts::primaryButton(text("window.homes.open"), [this, sheet, list, folder] {
        const auto home = list->currentItem()->data(Qt::UserRole).toByteArray().toStdString();
        sheet->close();
        open(folder, home);
    });
    choose->setObjectName(QStringLiteral("open home"));
    connect(list, &QListWidget::itemActivated, choose, [choose] { choose->click(); });
    buttons->addWidget(choose);
    sheet->content().addLayout(buttons);
    sheet->open();
    list->setFocus();
}

QString SystemChooser::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(services_.texts, key, arguments);
}

} // namespace tidwen

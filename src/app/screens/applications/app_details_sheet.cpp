#include "app/screens/applications/app_details_sheet.h"

#include "app/models/app_icons.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "inventory/last_use_text.h"
#include "scan/applications/installed_app.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tidwen {

namespace {

void addLine(Sheet& sheet, const QString& title, const QString& text) {
    if (text.isEmpty()) return;
    auto* line = parts::row(nullptr, scaled(10));
    auto* name = parts::label(title, Type::body, Role::second);
    name->setMinimumWidth(scaled(96));
    line->addWidget(name);
    line->addWidget(parts::paragraph(text), 1);
    sheet.content().addLayout(line);
}

QString tagsOf(const HomeRow& row) {
    QStringList names;
    for (const auto& tag : row.tags)
        names << shown(tag);
    return names.join(QStringLiteral(", "));
}

void addFacts(Sheet& sheet, const HomeRow& row, const InstalledApp& app, const Texts& texts, Timestamp now) {
    const auto used = describeLastUse(app, now);
    addLine(sheet, words(texts, "details.identifier"), shown(app.bundleID));
    addLine(sheet, words(texts, "details.version"), app.version ? shown(*app.version) : QString());
    addLine(sheet, words(texts, "cli.apps.size"), sizeWords(app.sizeBytes, texts));
    addLine(sheet, words(texts, "cli.apps.lastUsed"),
            used ? QString::fromStdString(texts.text(*used)) : QString());
    addLine(sheet, words(texts, "review.details.where"), shown(app.url.string()));
    addLine(sheet, words(texts, "details.tags"), tagsOf(row));
    if (row.isProtected)
        addLine(sheet, words(texts, "settings.tab.protected"), words(texts, "settings.protected.body"));
}

} // namespace

Sheet* openAppDetails(QWidget* window, const HomeRow& row, AppIcons& icons, const Texts& texts, Timestamp now,
                      const AppDetailsActions& actions) {
    if (!row.app) return nullptr;
    const auto& app = *row.app;
    const auto name = shown(app.name);
    auto* sheet = new Sheet(window, name, 620);
    auto* line = parts::row(nullptr, scaled(14));
    auto* tile = new Tile(52, icons);
    tile->show(name, app.bundleID, app.url);
    line->addWidget(tile);
    line->addWidget(parts::paragraph(name, Type::sheet), 1);
    sheet->content().addLayout(line);
    sheet->content().setSpacing(scaled(8));
    sheet->content().addSpacing(scaled(6));
    addFacts(*sheet, row, app, texts, now);
    sheet->content().addSpacing(scaled(8));
    auto& buttons = sheet->addAnswers();
    const auto add = [&](const char* key, const std::function<void()>& act) {
        auto* button = parts::button(words(texts, key), [sheet, act] {
            sheet->close();
            act();
        });
        button->setObjectName(QString::fromLatin1(key));
        buttons.addWidget(button);
    };
    add("history.revealButton", actions.reveal);
    add("permissions.show", actions.showPermissions);
    add("details.editTags", actions.editTags);
    add(row.isProtected ? "drop.tile.unprotect" : "drop.tile.protect", actions.toggleProtection);
    buttons.addWidget(
        parts::primaryButton(words(texts, "permissions.doneButton"), [sheet] { sheet->cancel(); }));
    sheet->open();
    return sheet;
}

} // namespace tidwen

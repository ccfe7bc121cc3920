#include "app/screens/confirm/confirm_sheet.h"

#include "app/models/app_icons.h"
#include "app/models/trace_words.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/risk_roles.h"
#include "app/style/style.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/read_only_text.h"
#include "app/widgets/sheet.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "operations/admin_batch.h"
#include "operations/removal_operation.h"
#include "program/mac.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "removal/removal_plan.h"
#include "removal/removal_summary.h"
#include "removal/removal_texts.h"
#include "scan/matching/trace.h"

#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStringList>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

constexpr std::size_t mostTiles = 3; ///< of several applications

/// A dot in the colour of a tier.
QLabel* dot(TraceRisk risk) {
    const int size = scaled(10);
    auto* label = new QLabel;
    QPixmap pixmap(QSize(size, size) * label->devicePixelRatioF());
    pixmap.setDevicePixelRatio(label->devicePixelRatioF());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    fillRounded(painter, QRectF(0, 0, size, size), colors()[roles(risk).mark], size / 2.0);
    painter.end();
    label->setPixmap(pixmap);
    return label;
}

QWidget* tierCard(const RemovalSummary& summary, const Texts& texts) {
    auto* card = new Panel({});
    card->setAccessibleName(words(texts, "confirm.breakdown"));
    auto* layout = parts::column(card, scaled(14));
    layout->setContentsMargins(scaled(16), scaled(14), scaled(16), scaled(14));
    for (const auto& tier : summary.tiers) {
        auto* line = parts::row(nullptr, scaled(10));
        line->addWidget(dot(tier.risk));
        line->addWidget(parts::paragraph(words(texts, "risk." + std::string(name(tier.risk)) + ".count %lld",
                                               {std::to_string(tier.count)})),
                        1);
        if (const auto size = tier.sizeText(texts))
            line->addWidget(parts::label(QString::fromStdString(*size), Type::body, Role::second));
        layout->addLayout(line);
    }
    return card;
}

/// The numbered steps, and below them the script that runs those of an administrator.
QStringList stepLines(const RemovalChoice& choice, const System& system) {
    const auto targets = choice.targets();
    std::vector<AppRecord> apps;
    apps.reserve(targets.size());
    for (const auto& target : targets)
        apps.push_back({target.target.name, target.target.bundleID});
    const auto layout = makeLayout(apps, system.clock.now(), system.user);
    QStringList lines;
    std::vector<RemovalOperation> administrator;
    for (auto& step : buildRemovalPlan(targets, layout, choice.mode())) {
        const auto verb = words(system.texts, "cli.step." + std::string(kindName(step.kind)));
        auto line = QStringLiteral("%1. %2  ").arg(step.id).arg(verb) + shown(step.displayName);
        if (const auto* move = std::get_if<operation::Move>(&step.kind))
            line += QStringLiteral("  →  ") + shown(move->destination.string());
        if (step.requiresRoot)
            line += QStringLiteral("  (") + words(system.texts, "cli.plan.administrator") + QLatin1Char(')');
        lines << line;
        if (step.requiresRoot) administrator.push_back(std::move(step));
    }
    if (!administrator.empty()) {
        lines << QString() << words(system.texts, "confirm.steps.script") << QString();
        std::istringstream script(adminBatch::script(administrator, system.user.userID));
        for (std::string line; std::getline(script, line);)
            lines << shown(line);
    }
    // The folder is named when the removal begins, so a time of now would name one that is never made.
    const auto folder = QString::fromStdString(layout.root.lastComponent());
    const auto time = folder.lastIndexOf(QStringLiteral(" - ")) + 3;
    return lines.replaceInStrings(folder, folder.left(time) + words(system.texts, "confirm.steps.time"));
}

void addTitle(Sheet& sheet, const RemovalChoice& choice, AppIcons& icons, const QString& title) {
    auto* line = parts::row(nullptr, scaled(14));
    const auto& groups = choice.going();
    for (std::size_t i = 0; i < std::min(groups.size(), mostTiles); ++i) {
        auto* tile = new Tile(44, icons);
        const auto& target = groups[i].group->target;
        tile->show(shown(target.name), target.bundleID, target.bundleURL);
        line->addWidget(tile);
    }
    line->addWidget(parts::paragraph(title, Type::sheet), 1);
    sheet.content().addLayout(line);
}

/// What goes, if it is one thing: a question about it names it.
const Trace* onlyItem(const RemovalChoice& choice) {
    const auto& going = choice.going();
    return going.size() == 1 && going.front().traces.size() == 1 ? going.front().traces.front() : nullptr;
}

} // namespace

Sheet* openConfirmSheet(QWidget* window, const RemovalChoice& choice, const Mac& mac, AppIcons& icons,
                        const std::function<void()>& confirm) {
    const auto& system = mac.system;
    const auto& texts = system.texts;
    const auto& summary = choice.summary();
    const auto subject = shown(choice.subject().text(texts)).toStdString();
    const auto said = confirmationTexts(summary, subject, choice.mode(), mac.rights(), texts);
    const auto title = QString::fromStdString(said.title);
    auto* sheet = new Sheet(window, title);
    addTitle(*sheet, choice, icons, title);
    if (const auto* only = onlyItem(choice)) {
        const auto place = tracePlace(*only, system.user);
        sheet->content().addWidget(parts::paragraph(breakable(traceTitle(*only, texts)), Type::strong));
        if (!place.isEmpty())
            sheet->content().addWidget(parts::paragraph(breakable(place), Type::second, Role::second));
    }
    if (summary.movedCount > 0)
        sheet->content().addWidget(
            parts::paragraph(words(texts, "confirm.body %lld %@",
                                   {std::to_string(summary.movedCount), summary.totalSizeText(texts)})));
    if (said.unloaded) sheet->content().addWidget(parts::paragraph(QString::fromStdString(*said.unloaded)));
    sheet->content().addWidget(tierCard(summary, texts));
    if (said.password)
        sheet->content().addWidget(
            makeNotice(NoticeTone::information,
                       {QString::fromStdString(*said.password), {}, {}, QStringLiteral("lock")}));
    if (said.permissionsReset)
        sheet->content().addWidget(
            makeNotice(NoticeTone::caution, {QString::fromStdString(*said.permissionsReset)}));
    if (said.permanentHeading) {
        const auto heading = QString::fromStdString(*said.permanentHeading);
        sheet->content().addWidget(parts::paragraph(heading, Type::strong, Role::sensitive));
        QStringList names;
        for (const auto& name : said.permanent)
            names << shown(name);
        sheet->content().addWidget(new ReadOnlyText(names, words(texts, "confirm.itemList"), 90));
    }
    auto& buttons = sheet->addAnswers();
    auto* steps = parts::button(words(texts, "confirm.steps"),
                                [window, &choice, &system] { openStepsSheet(window, choice, system); });
    steps->setObjectName(QStringLiteral("steps"));
    buttons.insertWidget(0, steps);
    buttons.addWidget(parts::button(words(texts, "confirm.cancelButton"), [sheet] { sheet->cancel(); }));
    const auto removeWords =
        words(texts, choice.mode() == RemovalMode::reset ? "review.reset" : "confirm.removeButton");
    auto* remove = summary.permanent.empty() ? parts::primaryButton(removeWords, confirm)
                                             : parts::button(removeWords, confirm);
    remove->setObjectName(QStringLiteral("confirm"));
    buttons.addWidget(remove);
    sheet->open();
    return sheet;
}

Sheet* openStepsSheet(QWidget* window, const RemovalChoice& choice, const System& system) {
    const auto title = words(system.texts, "confirm.steps.title");
    auto* sheet = new Sheet(window, title, 640);
    sheet->content().addWidget(parts::paragraph(title, Type::sheet));
    const auto lines = stepLines(choice, system);
    sheet->content().addWidget(new ReadOnlyText(lines, title, 360));
    auto& buttons = sheet->addAnswers();
    auto* copy =
        parts::button(words(system.texts, "confirm.steps.copy"),
                      [text = lines.join(QLatin1Char('\n'))] { QApplication::clipboard()->setText(text); });
    copy->setObjectName(QStringLiteral("copy steps"));
    buttons.insertWidget(0, copy);
    buttons.addWidget(
        parts::primaryButton(words(system.texts, "permissions.doneButton"), [sheet] { sheet->cancel(); }));
    sheet->open();
    return sheet;
}

} // namespace tidwen

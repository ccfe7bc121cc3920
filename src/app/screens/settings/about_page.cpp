#include "app/screens/settings/about_page.h"

#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/widgets/parts.h"
#include "app/widgets/toggle.h"
#include "app/widgets/words.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "services/update_feed.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tidwen {

namespace {

/// Names and licences of what is linked in, the same in every language.
constexpr const char* madeWith =
    "Qt (LGPL 3), ICU (Unicode License), SQLite (public domain), Expat, fmt, nlohmann/json, libpsl and curl "
    "(MIT and alike), simdjson (Apache 2.0), CLI11 (BSD), libsodium (ISC), tl::expected (CC0), Inter (OFL "
    "1.1), "
    "the Public Suffix List (MPL 2.0)";

} // namespace

AboutPage::AboutPage(OwnServices& own, const Texts& texts)
    : SettingsPage(texts, "settings.tab.about"), own_(own) {
    auto* line = parts::row(nullptr, scaled(14));
    line->addWidget(parts::picture(QStringLiteral("tidwen"), Role::text, 52));
    auto* column = parts::column(nullptr, scaled(2));
    column->addStretch(1);
    column->addWidget(parts::label(text("window.title"), Type::strong));
    column->addWidget(
        parts::label(text("settings.about.version %@", {own_.facts().version}), Type::second, Role::second));
    column->addStretch(1);
    line->addLayout(column, 1);
    rows().addLayout(line);
    addParagraph(text("settings.about.sentence"));
    checks_ = new Toggle(text("settings.about.updates"));
    checks_->setObjectName(QStringLiteral("checksForUpdates"));
    connect(checks_, &QAbstractButton::clicked, this,
            [this](bool isOn) { own_.settings().set("checksForUpdates", isOn ? "true" : "false"); });
    addRow(text("settings.about.updates"), text("settings.about.updates.body"), checks_);
    check_ = parts::button(text("settings.about.checkNow"), [this] { own_.updates().check(); });
    answer_ = parts::paragraph({}, Type::second, Role::second);
    answer_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    answer_->setAccessibleName(text("settings.about.updates"));
    auto* update = parts::row(nullptr, scaled(10));
    update->addWidget(check_);
    update->addWidget(answer_, 1);
    rows().addLayout(update);
    addStretch();
    auto* licences = parts::column(nullptr, scaled(4));
    licences->addWidget(parts::label(text("settings.about.licences"), Type::section, Role::second));
    licences->addWidget(parts::paragraph(QString::fromLatin1(madeWith), Type::second, Role::second));
    rows().addLayout(licences);
    follow(own_.settings().changed.connect([this] { showPresent(); }));
    const auto show = [this](const auto&) { showPresent(); };
    follow(own_.updates().isChecking.observe(show));
    follow(own_.updates().answer.observe(show));
    follow(own_.updates().error.observe(show));
    showPresent();
}

void AboutPage::showPresent() {
    const bool isOn = own_.settings().preferences().checksForUpdates.get();
    checks_->setChecked(isOn);
    checks_->setEnabled(!own_.settings().problem.get());
    check_->setVisible(isOn);
    check_->setEnabled(!own_.updates().isChecking.get());
    say(*answer_, isOn ? answer() : QString());
}

QString AboutPage::answer() const {
    auto& updates = own_.updates();
    if (updates.isChecking.get()) return text("updates.progress");
    if (const auto& error = updates.error.get()) return shown(texts().text(error->message()));
    const auto& answer = updates.answer.get();
    if (!answer) return {};
    if (!answer->release) return text("updates.none %@", {own_.facts().version});
    const auto* key = answer->state == UpdateState::available ? "updates.available %@ %@"
                                                              : "updates.needsNewerSystem %@ %@";
    const auto day = iso8601(answer->release->date).substr(0, 10);
    return shown(texts().text(key, {answer->release->version, day})) + QLatin1Char('\n')
           + shown(answer->release->url);
}

} // namespace tidwen

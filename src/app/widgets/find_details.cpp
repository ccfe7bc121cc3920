#include "app/widgets/find_details.h"

#include "app/models/trace_words.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/risk_roles.h"
#include "app/widgets/parts.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/language.h"
#include "base/timestamp.h"

#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>

#include <chrono>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

Timestamp modifiedAt(const FoundItem& item) {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::sys_time<std::chrono::nanoseconds>(
        std::chrono::nanoseconds(item.modifiedNanoseconds())));
}

} // namespace

FindDetails::FindDetails(const Texts& texts, UserEnvironment user, Actions actions, std::string tierNotes)
    : texts_(texts),
      user_(std::move(user)),
      actions_(std::move(actions)),
      tierNotes_(std::move(tierNotes)),
      content_(parts::column(this, scaled(6))) {
    content_->setContentsMargins(scaled(18), scaled(20), scaled(18), scaled(18));
    show(nullptr);
}

int FindDetails::paneWidth() {
    return scaled(292);
}

void FindDetails::show(const Trace* trace) {
    parts::clear(*content_);
    if (!trace) {
        content_->addWidget(
            parts::paragraph(words(texts_, "review.details.none"), Type::second, Role::second));
        content_->addStretch(1);
        return;
    }
    content_->addWidget(parts::picture(traceIcon(*trace), Role::second));
    content_->addWidget(parts::paragraph(breakable(traceTitle(*trace, texts_)), Type::strong));
    content_->addSpacing(scaled(6));
    addLine("review.details.why", breakable(traceReason(*trace, texts_)));
    addRisk(trace->risk);
    if (const auto* guidance = std::get_if<action::Guidance>(&trace->action))
        addLine("review.byHand.title", shown(texts_.text(guidance->step.instruction)));
    addMark(*trace);
    if (trace->sizeBytes) addLine("cli.apps.size", sizeOf(*trace));
    if (const auto place = tracePlace(*trace, user_); !place.isEmpty())
        addLine("review.details.where", breakable(place));
    if (trace->found)
        addLine("review.details.changed",
                QString::fromStdString(formatDate(modifiedAt(*trace->found), texts_.language())));
    addLine("review.details.undo", undoOf(*trace));
    addMoves(*trace);
    content_->addStretch(1);
}

void FindDetails::addMark(const Trace& trace) {
    auto badge = traceBadge(trace, texts_);
    if (badge.isEmpty()) return;
    const auto* why = trace.contestedBy     ? nullptr
                      : trace.mayHoldOthers ? "left.mayHoldOthers"
                      : trace.ownerUnsure   ? "left.ownerUnsure"
                                            : nullptr;
    if (why) badge += QStringLiteral(": ") + words(texts_, why);
    addLine("review.details.mark", breakable(badge));
}

QString FindDetails::undoOf(const Trace& trace) const {
    auto undo = words(texts_, "review.details.undo." + std::string(name(trace.reversibility)));
    if (trace.reversibility == Reversibility::irreversibleHarmless)
        undo += QLatin1Char('\n') + words(texts_, "review.badge.notUndone.help");
    const auto kept = actions_.retention ? actions_.retention() : std::nullopt;
    if (kept && trace.reversibility == Reversibility::reversible)
        undo += QLatin1Char('\n') + shown(texts_.text(*kept));
    return undo;
}

/// What can be done about it from here.
void FindDetails::addMoves(const Trace& trace) {
    if (const auto* path = movedPath(trace.action)) addPlaceButtons(*path);
    const auto* guidance = std::get_if<action::Guidance>(&trace.action);
    if (guidance && guidance->step.settingsPane && actions_.openPane)
        content_->addWidget(
            parts::button(words(texts_, "settings.permissions.open"),
                          [this, pane = *guidance->step.settingsPane] { actions_.openPane(pane); }),
            0, Qt::AlignLeading);
    if (!actions_.showPermissions || !std::holds_alternative<action::ResetPermissions>(trace.action)) return;
    auto* button = parts::button(words(texts_, "permissions.show"),
                                 [this, found = trace] { actions_.showPermissions(found); });
    button->setObjectName(QStringLiteral("permissions of the find"));
    content_->addWidget(button, 0, Qt::AlignLeading);
    content_->addWidget(parts::paragraph(words(texts_, "review.audit.note"), Type::second, Role::second));
}

QString FindDetails::sizeOf(const Trace& trace) const {
    auto size = QString::fromStdString(sizeText(*trace.sizeBytes, trace.isSizePartial, texts_));
    if (trace.innerItems > 0)
        size += QStringLiteral(" · ")
                + words(texts_, "report.subject.items %lld", {std::to_string(trace.innerItems)});
    return size;
}

void FindDetails::addRisk(TraceRisk risk) {
    const std::string tier(name(risk));
    const auto look = roles(risk);
    auto* lines = parts::column(nullptr, scaled(3));
    lines->addWidget(parts::badge(words(texts_, "risk." + tier + ".title"), look.mark, look.ground), 0,
                     Qt::AlignLeading);
    lines->addWidget(parts::paragraph(words(texts_, tierNotes_ + tier + ".note"), Type::second));
    addLine("review.details.risk", lines);
}

void FindDetails::addLine(const char* key, const QString& text) {
    auto* value = parts::column(nullptr);
    value->addWidget(parts::paragraph(text, Type::second));
    addLine(key, value);
}

void FindDetails::addLine(const char* key, QBoxLayout* value) {
    auto* line = parts::row(nullptr, scaled(10));
    auto* title = parts::label(words(texts_, key), Type::second, Role::second);
    title->setFixedWidth(scaled(76));
    title->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    title->setWordWrap(true);
    line->addWidget(title);
    line->addLayout(value, 1);
    content_->addLayout(line);
}

/// One under the other where they do not fit beside each other.
void FindDetails::addPlaceButtons(const Path& path) {
    auto* line = parts::row(nullptr, scaled(4));
    line->addWidget(
        parts::button(words(texts_, "history.revealButton"), [this, path] { actions_.reveal(path); }));
    line->addWidget(parts::button(words(texts_, "review.details.copy"), [path] {
        QApplication::clipboard()->setText(QString::fromStdString(path.string()));
    }));
    const auto margins = content_->contentsMargins();
    int words = line->spacing();
    for (int i = 0; i < line->count(); ++i)
        words += line->itemAt(i)->widget()->sizeHint().width();
    const bool isWide = words > paneWidth() - margins.left() - margins.right();
    if (isWide) line->setDirection(QBoxLayout::TopToBottom);
    line->addStretch(1);
    content_->addSpacing(scaled(6));
    content_->addLayout(line);
}

} // namespace tidwen

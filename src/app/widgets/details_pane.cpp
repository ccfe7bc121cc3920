#include "app/widgets/details_pane.h"

#include "app/models/trace_words.h"
#include "app/style/metrics.h"
#include "app/style/palette.h"
#include "app/style/risk_roles.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/language.h"
#include "base/path.h"
#include "base/timestamp.h"

#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>

#include <chrono>
#include <string>
#include <variant>

namespace tidwen {

namespace {

constexpr int foldsBelow = 960; ///< of the window's width

Timestamp modifiedAt(const FoundItem& item) {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::sys_time<std::chrono::nanoseconds>(
        std::chrono::nanoseconds(item.modifiedNanoseconds())));
}

} // namespace

DetailsPane::DetailsPane(const Texts& texts, UserEnvironment user, std::function<void(const Path&)> reveal,
                         std::string tierNotes)
    : Panel({.radius = 0, .edges = Qt::LeftEdge}),
      texts_(texts),
      user_(std::move(user)),
      reveal_(std::move(reveal)),
      tierNotes_(std::move(tierNotes)),
      content_(parts::column(this, scaled(6))) {
    setFixedWidth(scaled(292));
    content_->setContentsMargins(scaled(18), scaled(20), scaled(18), scaled(18));
    setAccessibleName(words(texts_, "review.details"));
    show(nullptr);
}

void DetailsPane::show(const Trace* trace) {
    parts::clear(*content_);
    shown_ = trace;
    if (button_) fold();
    if (!trace) {
        content_->addWidget(
            parts::paragraph(words(texts_, "review.details.none"), Type::second, Role::second));
        content_->addStretch(1);
        return;
    }
    content_->addWidget(parts::picture(traceIcon(*trace), Role::second));
    content_->addWidget(parts::paragraph(traceTitle(*trace, texts_), Type::strong));
    content_->addSpacing(scaled(6));
    addLine("review.details.why", traceReason(*trace, texts_));
    addRisk(trace->risk);
    const auto* guidance = std::get_if<action::Guidance>(&trace->action);
    if (guidance) addLine("review.byHand.title", shown(texts_.text(guidance->step.instruction)));
    if (auto badge = traceBadge(*trace, texts_); !badge.isEmpty()) {
        const auto* why = trace->contestedBy     ? nullptr
                          : trace->mayHoldOthers ? "left.mayHoldOthers"
                          : trace->ownerUnsure   ? "left.ownerUnsure"
                                                 : nullptr;
        if (why) badge += QStringLiteral(": ") + words(texts_, why);
        addLine("review.details.mark", badge);
    }
    if (trace->sizeBytes) addLine("cli.apps.size", sizeOf(*trace));
    if (const auto place = tracePlace(*trace, user_); !place.isEmpty())
        addLine("review.details.where", breakable(place));
    if (trace->found)
        addLine("review.details.changed",
                QString::fromStdString(formatDate(modifiedAt(*trace->found), texts_.language())));
    auto undo = words(texts_, "review.details.undo." + std::string(name(trace->reversibility)));
    if (trace->reversibility == Reversibility::irreversibleHarmless)
        undo += QLatin1Char('\n') + words(texts_, "review.badge.notUndone.help");
    addLine("review.details.undo", undo);
    if (const auto* path = movedPath(trace->action)) addButtons(*path);
    if (guidance && guidance->step.settingsPane && onPane)
        content_->addWidget(parts::button(words(texts_, "settings.permissions.open"),
                                          [this, pane = *guidance->step.settingsPane] { onPane(pane); }),
                            0, Qt::AlignLeading);
    if (onPermissions && std::holds_alternative<action::ResetPermissions>(trace->action)) {
        auto* button = parts::button(words(texts_, "permissions.show"),
                                     [this, found = *trace] { onPermissions(found); });
        button->setObjectName(QStringLiteral("permissions of the find"));
        content_->addWidget(button, 0, Qt::AlignLeading);
        content_->addWidget(parts::paragraph(words(texts_, "review.audit.note"), Type::second, Role::second));
    }
    content_->addStretch(1);
}

QPushButton* DetailsPane::makeButton(Stands stands) {
    stands_ = stands;
    button_ = parts::button(words(texts_, "review.details"), [this] { openSheet(); });
    button_->setObjectName(QStringLiteral("details"));
    return button_;
}

void DetailsPane::fold() {
    const bool hasRoom = window()->width() >= scaled(foldsBelow);
    setVisible(hasRoom && (shown_ || stands_ == Stands::always));
    button_->setVisible(!hasRoom);
    button_->setEnabled(shown_ != nullptr);
}

void DetailsPane::openSheet() const {
    auto* sheet = new Sheet(window(), words(texts_, "review.details"), 340);
    const auto leave = [sheet](const auto& act) {
        return [sheet, act](const auto& argument) {
            sheet->close(); // what comes next may be another one
            act(argument);
        };
    };
    auto* pane = new DetailsPane(texts_, user_, reveal_, tierNotes_);
    if (onPermissions) pane->onPermissions = leave(onPermissions);
    if (onPane) pane->onPane = leave(onPane);
    pane->show(shown_);
    sheet->content().addWidget(pane, 0);
    sheet->addAnswers().addWidget(
        parts::primaryButton(words(texts_, "permissions.doneButton"), [sheet] { sheet->cancel(); }));
    sheet->open();
}

QString DetailsPane::sizeOf(const Trace& trace) const {
    auto size = QString::fromStdString(sizeText(*trace.sizeBytes, trace.isSizePartial, texts_));
    if (trace.innerItems > 0)
        size += QStringLiteral(" · ")
                + words(texts_, "report.subject.items %lld", {std::to_string(trace.innerItems)});
    return size;
}

void DetailsPane::addRisk(TraceRisk risk) {
    const std::string tier(name(risk));
    const auto look = roles(risk);
    auto* lines = parts::column(nullptr, scaled(3));
    lines->addWidget(parts::badge(words(texts_, "risk." + tier + ".title"), look.mark, look.ground), 0,
                     Qt::AlignLeading);
    lines->addWidget(parts::paragraph(words(texts_, tierNotes_ + tier + ".note"), Type::second));
    addLine("review.details.risk", lines);
}

void DetailsPane::addLine(const char* key, const QString& text) {
    auto* value = parts::column(nullptr);
    value->addWidget(parts::paragraph(text, Type::second));
    addLine(key, value);
}

void DetailsPane::addLine(const char* key, QBoxLayout* value) {
    auto* line = parts::row(nullptr, scaled(10));
    auto* title = parts::label(words(texts_, key), Type::second, Role::second);
    title->setFixedWidth(scaled(76));
    title->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    title->setWordWrap(true);
    line->addWidget(title);
    line->addLayout(value, 1);
    content_->addLayout(line);
}

void DetailsPane::addButtons(const Path& path) {
    auto* line = parts::row(nullptr, scaled(4));
    line->addWidget(parts::button(words(texts_, "history.revealButton"), [this, path] { reveal_(path); }));
    line->addWidget(parts::button(words(texts_, "review.details.copy"), [path] {
        QApplication::clipboard()->setText(QString::fromStdString(path.string()));
    }));
    const auto margins = content_->contentsMargins();
    int words = line->spacing();
    for (int i = 0; i < line->count(); ++i)
        words += line->itemAt(i)->widget()->sizeHint().width();
    const bool isWide = words > maximumWidth() - margins.left() - margins.right();
    if (isWide) line->setDirection(QBoxLayout::TopToBottom);
    line->addStretch(1);
    content_->addSpacing(scaled(6));
    content_->addLayout(line);
}

} // namespace tidwen

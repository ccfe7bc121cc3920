#include "app/screens/report/report_screen.h"

#include "app/models/trace_words.h"
#include "app/models/undo_words.h"
#include "app/models/unseen_words.h"
#include "app/style/icons.h"
#include "app/style/metrics.h"
#include "app/style/style.h"
#include "app/widgets/notice.h"
#include "app/widgets/panel.h"
#include "app/widgets/parts.h"
#include "app/widgets/return_key.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "base/message.h"
#include "base/path.h"
#include "base/texts.h"
#include "quarantine/not_undone.h"
#include "quarantine/undo_service.h"
#include "removal/removal_texts.h"
#include "removal/stay_reason.h"
#include "scan/matching/trace.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

constexpr qsizetype mostPlaces = 20;     ///< that could not be read
constexpr std::size_t mostWidgets = 500; ///< of one kind, for they are widgets

} // namespace

ReportScreen::ReportScreen(RemovalFlowModel& flow, const Texts& texts,
                           std::function<void(const Path&)> reveal, std::function<void()> openPrivacy)
    : flow_(flow), texts_(texts), reveal_(std::move(reveal)), openPrivacy_(std::move(openPrivacy)) {
    auto* layout = parts::column(this);
    auto* body = new QWidget;
    auto* inner = parts::column(body, scaled(10));
    inner->setContentsMargins(scaled(24), scaled(56), scaled(24), scaled(24));
    mark_ = new QLabel;
    title_ = parts::paragraph({}, Type::title);
    title_->setObjectName(QStringLiteral("report title"));
    counts_ = parts::paragraph({}, Type::body, Role::second);
    for (auto* label : {mark_, title_, counts_}) {
        label->setAlignment(Qt::AlignCenter);
        inner->addWidget(label);
    }
    inner->addSpacing(scaled(16));
    auto* narrow = new QWidget;
    narrow->setMaximumWidth(scaled(520));
    cards_ = parts::column(narrow, scaled(12));
    inner->addLayout(parts::centred(narrow));
    inner->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(body);
    scroll->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(scroll, 1);
    layout->addWidget(makeFooter());
}

QWidget* ReportScreen::makeFooter() {
    auto* footer = footerPanel();
    auto* layout = static_cast<QBoxLayout*>(footer->layout());
    undo_ = parts::button(
        text("report.undo.button"), [this] { flow_.undoLast(); }, QStringLiteral("undo"));
    undo_->setObjectName(QStringLiteral("undo"));
    done_ = parts::primaryButton(text("permissions.doneButton"), [this] { flow_.close(); });
    done_->setObjectName(QStringLiteral("done"));
    layout->addWidget(undo_);
    layout->addStretch(1);
    layout->addWidget(done_);
    return footer;
}

void ReportScreen::update() {
    const auto* report = std::get_if<stage::Report>(&flow_.stage());
    if (!report) return;
    parts::clear(*cards_);
    if (flow_.errorMessage())
        cards_->addWidget(makeNotice(NoticeTone::caution, {QString::fromStdString(*flow_.errorMessage())}));
    if (flow_.undoReport())
        showUndo(*flow_.undoReport());
    else
        showReport(*report);
    const bool canUndo = !report->report.quarantineRoot.isRoot() && !flow_.isUndoing() && !flow_.undoReport();
    undo_->setEnabled(canUndo);
    done_->setEnabled(!flow_.isUndoing());
    undo_->setText(text(flow_.isUndoing() ? "home.recovery.restoring" : "report.undo.button"));
    setFocus();
}

void ReportScreen::showMark(const char* icon, Role color, Role ground) {
    const int size = scaled(64);
    QPixmap pixmap(QSize(size, size) * devicePixelRatioF());
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    fillRounded(painter, QRectF(0, 0, size, size), colors()[ground], size / 2.0);
    const double inner = scaled(30);
    const QRectF place((size - inner) / 2, (size - inner) / 2, inner, inner);
    paintIcon(painter, place, QString::fromLatin1(icon), colors()[color]);
    painter.end();
    mark_->setPixmap(pixmap);
}

void ReportScreen::showReport(const stage::Report& stage) {
    const auto subject = shown(stage.subject.text(texts_)).toStdString();
    const auto said = reportTexts(stage.report, subject, texts_);
    const bool isClean = said.failures.empty() && !said.stopped && !stage.report.manifestFailure;
    if (isClean && said.isClean && stage.report.unseen.isNothing())
        showMark("check", Role::safe, Role::safeGround);
    else
        showMark("warning", Role::look, Role::lookGround);
    title_->setText(QString::fromStdString(isClean ? said.summary : subject));
    auto counts = QString::fromStdString(said.counts);
    if (said.reclaimed) counts += QStringLiteral(" · ") + QString::fromStdString(*said.reclaimed);
    counts_->setText(counts);
    if (said.stopped)
        cards_->addWidget(makeNotice(NoticeTone::caution, {QString::fromStdString(*said.stopped)}));
    showCard(stage);
}

void ReportScreen::showCard(const stage::Report& stage) {
    const auto& report = stage.report;
    const auto said = reportTexts(report, {}, texts_);
    auto* panel = new Panel({});
    auto* card = parts::column(panel, scaled(14));
    card->setContentsMargins(scaled(16), scaled(14), scaled(16), scaled(14));
    addFailures(*card, stage.report, said);
    auto note = text("report.quarantine.note");
    if (const auto kept = flow_.retention()) note += QLatin1Char(' ') + shown(texts_.text(*kept));
    if (!report.quarantineRoot.isRoot())
        addLine(*card,
                {"folder", Role::second, text("report.quarantine.title"),
                 shown(report.quarantineRoot.lastComponent()) + QLatin1Char('\n') + note},
                parts::button(text("history.revealButton"),
                              [this, folder = report.quarantineRoot] { reveal_(folder); }));
    addLines(*card, {"warning", Role::look, text("report.remarks"), {}}, said.remarks);
    for (const auto& line : said.verification)
        addLine(*card,
                {said.isClean ? "check" : "warning", said.isClean ? Role::safe : Role::look,
                 text("report.verify.title"), shown(line)},
                said.isClean || !openPrivacy_ ? nullptr
                                              : parts::button(text("report.verify.open"), openPrivacy_));
    for (const auto& unseen : unseenWords(report.unseen, UnseenAt::report, texts_)) {
        auto body = firstLines(unseen.places, mostPlaces, texts_);
        if (!unseen.body.isEmpty()) body.prepend(unseen.body + QLatin1Char('\n'));
        addLine(*card, {"warning", Role::look, unseen.title, body});
    }
    addStaying(*card, stage);
    if (card->count() == 0) return panel->deleteLater();
    cards_->addWidget(panel);
}

/// What the user left out is no cause for concern; of a list that goes on showing it, it is only counted.
void ReportScreen::addStaying(QBoxLayout& card, const stage::Report& stage) {
    std::size_t lines = 0;
    int listed = 0;
    ByteSum size;
    for (const auto& remainder : stage.report.left)
        for (const auto& item : remainder.traces) {
            if (isListedAgain(item, stage.subject.kind)) {
                ++listed;
                size.add(item.trace.sizeBytes, item.trace.isSizePartial);
            } else if (lines++ < mostWidgets) {
                const bool wasLeftOut = item.reason == StayReason::notChosen;
                addLine(card, {wasLeftOut ? "info" : "warning", wasLeftOut ? Role::second : Role::look,
                               text("report.stays %@", {traceTitle(item.trace, texts_).toStdString()}),
                               whyItStays(item)});
            }
        }
    if (lines > mostWidgets) addLine(card, {"warning", Role::look, more(lines - mostWidgets), {}});
    if (listed == 0) return;
    const auto items =
        texts_.text("review.header.summary %lld %@", {std::to_string(listed), sizeText(size, texts_)});
    addLine(card, {"info", Role::second, text("report.notChosen"), QString::fromStdString(items)});
}

/// Under one heading, for they come first.
void ReportScreen::addFailures(QBoxLayout& card, const RemovalReport& report, const ReportTexts& said) {
    if (said.failures.empty() && said.unsettled.empty() && !report.manifestFailure) return;
    card.addWidget(parts::paragraph(text("report.failures.title"), Type::strong));
    if (report.manifestFailure)
        addLine(
            card,
            {"warning", Role::sensitive, shown(report.quarantineRoot.lastComponent()),
             shown(texts_.text(Message{"report.noManifest %@", {texts_.text(*report.manifestFailure)}}))});
    std::size_t lines = 0;
    for (const auto* failures : {&said.unsettled, &said.failures})
        for (const auto& failure : *failures)
            if (lines++ < mostWidgets)
                addLine(card, {"warning", Role::sensitive, breakable(shown(failure.subject)),
                               shown(failure.reason)});
    if (lines > mostWidgets) addLine(card, {"warning", Role::sensitive, more(lines - mostWidgets), {}});
}

/// What only the user can do is told as it is to be done.
QString ReportScreen::whyItStays(const StayingTrace& item) const {
    const auto* guidance = std::get_if<action::Guidance>(&item.trace.action);
    if (guidance) return shown(texts_.text(guidance->step.instruction));
    const auto& other = item.trace.contestedBy;
    const auto why = other && item.reason == StayReason::contested
                         ? traceBadge(item.trace, texts_) + QStringLiteral(" (")
                               + shown(other->place.string()) + QLatin1Char(')')
                         : shown(texts_.text(item.describe()));
    const auto* path = movedPath(item.trace.action);
    return path ? shown(path->string()) + QStringLiteral(" · ") + why : why;
}

/// One line for each of `bodies`, as many as the screen names.
void ReportScreen::addLines(QBoxLayout& card, Line line, const std::vector<std::string>& bodies) {
    std::size_t lines = 0;
    for (const auto& body : bodies) {
        if (lines++ == mostWidgets) break;
        line.body = shown(body);
        addLine(card, line);
    }
    if (bodies.size() <= mostWidgets) return;
    line.body = more(bodies.size() - mostWidgets);
    addLine(card, line);
}

QString ReportScreen::more(std::size_t count) const {
    return text("report.more %lld", {std::to_string(count)});
}

void ReportScreen::addLine(QBoxLayout& card, const Line& line, QPushButton* button) {
    auto* row = parts::row(nullptr, scaled(10));
    row->addWidget(parts::picture(QString::fromLatin1(line.icon), line.color), 0, Qt::AlignTop);
    auto* words = parts::column(nullptr);
    words->addWidget(parts::paragraph(line.title));
    words->addWidget(parts::paragraph(line.body, Type::second, Role::second));
    row->addLayout(words, 1);
    if (button) row->addWidget(button);
    card.addLayout(row);
}

void ReportScreen::showUndo(const UndoReport& undo) {
    const bool isWhole = undo.failures.empty();
    if (isAsBefore(undo))
        showMark("undo", Role::safe, Role::safeGround);
    else
        showMark("warning", Role::look, Role::lookGround);
    title_->setText(text(isWhole ? "report.undo.complete" : "report.undo.partial"));
    counts_->setText(text("report.undo.restored %lld %lld",
                          {std::to_string(undo.restoredCount), std::to_string(undo.totalCount)}));
    if (const auto lost = describe(undo.lost))
        cards_->addWidget(makeNotice(NoticeTone::information, {QString::fromStdString(texts_.text(*lost))}));
    const auto lines = undoLines(undo, openPrivacy_ != nullptr, texts_);
    const auto tone = isAsBefore(undo) ? NoticeTone::information : NoticeTone::caution;
    constexpr auto most = static_cast<qsizetype>(mostWidgets);
    for (const auto& line : lines.mid(0, most))
        cards_->addWidget(makeNotice(tone, {line}));
    if (lines.size() > most)
        cards_->addWidget(makeNotice(tone, {more(static_cast<std::size_t>(lines.size() - most))}));
}

void ReportScreen::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    returnKey::waitForPause(); // or it is gone before it was read
}

void ReportScreen::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    returnKey::waitNoLonger();
}

void ReportScreen::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->matches(QKeySequence::Undo)) return undo_->click(); // nothing while it is disabled
    if ((isReturn || event->key() == Qt::Key_Escape) && !flow_.isUndoing()) {
        flow_.close();
        return;
    }
    QWidget::keyPressEvent(event);
}

QString ReportScreen::text(const char* key, const std::vector<std::string>& arguments) const {
    return words(texts_, key, arguments);
}

} // namespace tidwen

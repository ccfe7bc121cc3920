#include "app/shell/mac_questions.h"

#include "app/screens/confirm/confirm_sheet.h"
#include "app/screens/permissions/permissions_view.h"
#include "app/widgets/parts.h"
#include "app/widgets/sheet.h"
#include "app/widgets/tile.h"
#include "app/widgets/words.h"
#include "base/background_step.h"
#include "program/session_models.h"
#include "removal/flow_types.h"
#include "scan/matching/trace.h"
#include "sweep/location_sweep.h"
#include "system/startup_items_model.h"

#include <QBoxLayout>
#include <QPushButton>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

struct ClosingWords {
    const char* title;
    const char* body;
};

/// What stopping means for what is under way.
ClosingWords closingWords(std::optional<SessionModels::Work> work) {
    if (work == SessionModels::Work::undo) return {"closing.title", "closing.body.undo"};
    if (work == SessionModels::Work::deletion) return {"closing.title.deletion", "closing.body.deletion"};
    return {"closing.title", "closing.body"};
}

} // namespace

MacQuestions::MacQuestions(QWidget& view, OpenMac& mac, std::function<void(const QString&)> say)
    : view_(view), mac_(mac), texts_(mac.system().texts), say_(std::move(say)) {
    following_.push_back(mac.chores().changed.connect([this](ChoresChange) { follow(); }));
    following_.push_back(
        mac.session().models().history().busyEntryID.observe([this](const auto&) { follow(); }));
}

/// What shows a part of the Mac goes before it.
MacQuestions::~MacQuestions() {
    delete permissionsSheet_;
}

MacQuestions::Open MacQuestions::open() const {
    return {.confirms = confirmSheet_ != nullptr,
            .asksToClose = closeSheet_ ? std::optional(closing_) : std::nullopt,
            .whenIdle = whenIdle_,
            .measures = measures_};
}

void MacQuestions::reopen(Open open) {
    if (open.confirms) confirm();
    if (open.asksToClose) askToClose(*open.asksToClose);
    whenIdle_ = std::move(open.whenIdle);
    if (open.measures) confirmStartupItems();
}

void MacQuestions::follow() {
    if (confirmSheet_ && mac_.flow().stage().index() != confirmedStage_) confirmSheet_->cancel();
    askToQuit();
    if (mac_.isBusy()) return;
    if (closeSheet_) closeSheet_->close(); // there is nothing left to stop
    if (whenIdle_) std::exchange(whenIdle_, nullptr)();
}

/// An application did not quit: goes on without its consent, or leaves it out.
void MacQuestions::askToQuit() {
    const auto& prompt = mac_.flow().pendingQuitPrompt();
    if (!prompt && quitSheet_) quitSheet_->close();
    if (!prompt || askedAbout_ == prompt->id) return;
    if (quitSheet_) quitSheet_->close();
    askedAbout_ = prompt->id;
    auto* sheet =
        new Sheet(view_.window(), words(texts_, "quit.title %@", {shown(prompt->appName).toStdString()}));
    quitSheet_ = sheet;
    for (const auto& group : mac_.flow().choice().findings().groups())
        if (const auto& app = group.target; app.name == prompt->appName) {
            auto* tile = new Tile(44, mac_.icons());
            tile->show(shown(app.name), app.bundleID, app.bundleURL);
            sheet->content().addWidget(tile, 0, Qt::AlignLeading);
            break;
        }
    sheet->addWords({text("quit.body")});
    const auto answer = [this, sheet](QuitPromptChoice choice) {
        sheet->onCancel = nullptr;
        sheet->close();
        mac_.flow().answerQuitPrompt(choice);
    };
    sheet->onCancel = [this] { mac_.flow().answerQuitPrompt(QuitPromptChoice::cancelApp); };
    auto& answers = sheet->addAnswers();
    answers.addWidget(
        parts::button(text("quit.continue"), [answer] { answer(QuitPromptChoice::forceContinue); }));
    answers.addWidget(
        parts::primaryButton(text("quit.leaveOut"), [answer] { answer(QuitPromptChoice::cancelApp); }));
    view_.window()->show(); // it may go on without one, but not without an answer
    sheet->open();
}

void MacQuestions::confirm() {
    if (confirmSheet_) return;
    confirmedStage_ = mac_.flow().stage().index();
    confirmSheet_ =
        openConfirmSheet(view_.window(), mac_.flow().choice(), mac_.session().mac(), mac_.icons(), [this] {
            mac_.onceThere([this, alive = std::weak_ptr(alive_)] {
                if (!alive.expired()) takeConfirmation();
            });
        });
}

/// The sheet stood until now, so what it asked about is still what is chosen.
void MacQuestions::takeConfirmation() {
    if (!confirmSheet_) return; // answered twice, or closed meanwhile
    confirmSheet_->close();
    const auto answer = mac_.flow().confirm();
    if (!answer && !mac_.flow().errorMessage()) say_(shown(texts_.text(answer.error())));
}

void MacQuestions::confirmInstallers() {
    const auto traces = mac_.session().models().installers().selectedTraces();
    if (mac_.isBusy() || traces.empty()) return;
    mac_.flow().offer(texts_.text("installers.title"), traces);
    confirm();
}

/// What the jobs hold is measured first, for the question names their size.
void MacQuestions::confirmStartupItems() {
    if (mac_.isBusy()) return;
    measures_ = true;
    std::vector<Trace> traces;
    for (const auto& item : mac_.session().models().startupItems().selectedItems())
        if (auto trace = startupTrace(item)) traces.push_back(std::move(*trace));
    inBackground(
        *this, alive_, mac_.session().background(), mac_.loop(),
        [&files = mac_.system().files, traces = std::move(traces)]() mutable {
            measureTraces(files, traces, {});
            return std::move(traces);
        },
        [](MacQuestions& questions, std::vector<Trace> measured) {
            questions.confirmMeasured(std::move(measured));
        });
}

void MacQuestions::confirmMeasured(std::vector<Trace> measured) {
    auto& flow = mac_.flow();
    // Pressed again while it was measured, the first question stands, over what it names.
    const bool isElsewhere = !std::holds_alternative<stage::StartupItems>(flow.stage());
    const bool isOver = measured.empty() || confirmSheet_ || isElsewhere || mac_.isBusy();
    const auto* open = isOver ? nullptr : Sheet::topmost(*view_.window());
    measures_ = open != nullptr;
    if (isOver) return;
    if (open) { // Asks when that is closed, about what is chosen then.
        QObject::connect(
            open, &QObject::destroyed, &view_, [this] { confirmStartupItems(); }, Qt::QueuedConnection);
        return;
    }
    flow.offer(texts_.text("startup.title"), std::move(measured),
               mac_.session().models().startupItems().selectedInUse());
    confirm();
}

void MacQuestions::showPermissions(AppTarget app, std::function<void()> openPrivacy) {
    const auto privacy = mac_.isRunningMac() ? text("permissions.sheet.openSettings") : QString();
    auto* sheet =
        new PermissionsView(view_.window(), mac_.session().models().permissionsSheet(std::move(app)),
                            mac_.icons(), texts_, {privacy, std::move(openPrivacy)});
    permissionsSheet_ = sheet;
    sheet->open();
}

void MacQuestions::askToClose(const Closing& closing) {
    if (closeSheet_) return;
    // Of what stands when it is asked; its end takes the question back.
    const auto words = closingWords(mac_.session().models().work());
    auto* sheet = new Sheet(view_.window(), text(words.title), 560);
    closeSheet_ = sheet;
    closing_ = closing;
    sheet->addWords({text(words.body), text("closing.body.hide")});
    auto& answers = sheet->addAnswers();
    answers.addWidget(parts::button(text("closing.stop"), [this, sheet, closing] {
        sheet->close();
        if (!mac_.isBusy()) return closing.whenStopped();
        whenIdle_ = closing.whenStopped;
        mac_.flow().stop();
        mac_.chores().stop();
        mac_.session().models().history().stop();
    }));
    answers.addWidget(parts::button(text("closing.hide"), [this, sheet, closing] {
        sheet->close();
        whenIdle_ = closing.whenDone;
        closing.hide();
        follow();
    }));
    answers.addWidget(parts::primaryButton(text("closing.goOn"), [sheet] { sheet->close(); }));
    sheet->open();
}

QString MacQuestions::text(const char* key) const {
    return words(texts_, key);
}

} // namespace tidwen

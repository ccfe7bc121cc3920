#include "cli/flow_session.h"

#include "base/progress_relay.h"
#include "base/step_progress.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "cli/labels.h"
#include "inventory/installed_applications.h"
#include "program/host_paths.h"
#include "program/mac.h"
#include "removal/flow_types.h"
#include "removal/startup_chores.h"
#include "removal/target_intake.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/other_applications.h"
#include "sweep/orphan_scanner.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace tidwen {

FlowSession::FlowSession(const CommandContext& context, Mac& mac)
    : context_(context),
      session_(mac, main_, InstalledBundles::Looks::once),
      model_(session_.models().removal()),
      progress_(model_.changed.connect([this](FlowChange) { showProgress(); })),
      steps_(model_.progress.observe([this](const auto&) { showProgress(); })) {}

std::vector<RecoveryNotice> FlowSession::start() {
    session_.models().chores().run();
    awaitChores();
    return session_.models().chores().recoveryNotices();
}

const tl::expected<RecoveryOutcome, Message>& FlowSession::recover() {
    auto& chores = session_.models().chores();
    const EndSignals signals(main_, [&] {
        if (chores.isDone()) return; // already complete
        context_.console.error(context_.text("cli.stopping"));
        chores.stop();
    });
    chores.recover();
    awaitChores();
    return *chores.recovery();
}

void FlowSession::awaitChores() {
    auto& chores = session_.models().chores();
    const auto steps = chores.progress.observe([this](const auto& step) {
        if (step)
            context_.console.progress(labels::progress(context_.text("cli.progress.recovering"), *step,
                                                       context_.texts, context_.console.progressColumns()));
    });
    main_.runUntil([&] { return chores.isDone(); });
    context_.console.endProgress();
}

void FlowSession::heedSignals() {
    if (!signals_) signals_.emplace(main_, [this] { stopAtSignal(); });
}

/// Between two steps nothing is stopped: the next one does not begin.
void FlowSession::stopAtSignal() {
    if (std::holds_alternative<stage::Report>(model_.stage())) return; // already complete
    isCalledOff_ = true;
    sweepStop_.requestStop();
    if (std::holds_alternative<stage::Removing>(model_.stage()))
        context_.console.error(context_.text("cli.stopping"));
    model_.stop();
}

/// Whether a signal has come so far, with a message.
bool FlowSession::isCalledOff() {
    main_.drain();
    if (isCalledOff_) context_.console.error(context_.text("cli.remove.cancelled"));
    return isCalledOff_;
}

bool FlowSession::scan(const std::vector<std::string>& words, ProtectedTargets ofProtected,
                       GoneTargets ofGone) {
    heedSignals();
    auto& mac = session_.mac();
    const bool areAllPaths =
        std::all_of(words.begin(), words.end(), [](const auto& word) { return word.starts_with('/'); });
    std::vector<InstalledIdentity> installed;
    bool areAllSeen = true;
    if (!areAllPaths) {
        const auto& system = mac.system;
        const auto bundles = session_.lookAtBundles();
        installed = identitiesOf(*bundles, findApplicationBundles(system.files, system.user));
        areAllSeen = bundles->coverage().isComplete();
    }
    auto named = findBundles(words, ApplicationFinder(mac.system.files, installed, HostPaths(mac.volume)));
    if (ofGone == GoneTargets::refused)
        for (auto& each : std::exchange(named.gone, {}))
            named.failures.push_back({each.bundleID, std::move(each.otherwise)});
    for (const auto& failure : named.failures)
        context_.report(failure);
    someRefused_ = !named.failures.empty();
    const bool isAnyUnknown = someRefused_ || !named.gone.empty();
    if (isAnyUnknown && !areAllSeen) context_.error({"cli.app.notAllSeen"});
    if ((named.bundles.empty() && named.gone.empty()) || isCalledOff()) return false;
    model_.loadTargets(named.bundles, ofProtected, named.gone);
    const bool hasEnded = awaitScan();
    reportRefusals();
    return hasEnded && std::holds_alternative<stage::Review>(model_.stage());
}

bool FlowSession::sweep() {
    heedSignals();
    model_.scanOrphans();
    return awaitScan();
}

std::optional<OrphanScanResult> FlowSession::findOrphans() {
    context_.console.progress(context_.text("cli.orphans.progress"));
    heedSignals();
    OrphanScanResult result;
    bool hasEnded = false;
    {
        const ProgressRelay relay(main_, [this](const StepProgress& step) {
            context_.console.progress(labels::progress(context_.text("cli.orphans.progress"), step,
                                                       context_.texts, context_.console.progressColumns()));
        });
        session_.background().post([&, onStep = relay.observer()] {
            result =
                session_.sweepOrphans(session_.protectedApps().bundleIDs(), sweepStop_.token(), {}, onStep);
            main_.post([&] { hasEnded = true; });
        });
        main_.runUntil([&] { return hasEnded; });
    }
    context_.console.endProgress();
    letSignalsEnd(); // what follows is printed
    if (!isCalledOff()) return result;
    return std::nullopt;
}

void FlowSession::reportRefusals() {
    if (model_.problems().empty()) return;
    someRefused_ = true;
    for (const auto& problem : model_.problems())
        context_.report(problem);
    for (const auto& target : model_.protectedTargets())
        context_.advise({"cli.protect.takeOff %@"}, unprotectCommand(target, context_));
}

/// False if there was nothing to scan, or the scan was cancelled.
bool FlowSession::awaitScan() {
    const auto hasEnded = [this] { return !std::holds_alternative<stage::Scanning>(model_.stage()); };
    if (hasEnded()) return false;
    main_.runUntil(hasEnded);
    context_.console.endProgress();
    return !isCalledOff();
}

bool FlowSession::remove() {
    heedSignals();
    if (isCalledOff()) return false;
    if (!model_.confirm()) return false;
    for (;;) {
        awaitRemoval();
        if (!model_.pendingQuitPrompt()) break;
        answer(*model_.pendingQuitPrompt());
    }
    context_.console.endProgress();
    return std::holds_alternative<stage::Report>(model_.stage());
}

/// Runs until the report or a question.
void FlowSession::awaitRemoval() {
    main_.runUntil([this] {
        return model_.pendingQuitPrompt() || !std::holds_alternative<stage::Removing>(model_.stage());
    });
    main_.drain(); // handles a signal received at the end
}

void FlowSession::answer(const QuitPrompt& prompt) {
    letSignalsEnd();
    // "--yes" confirms what was shown, not the loss of data in a running application.
    const bool goOn = !context_.arguments.yes && context_.console.canAsk()
                      && context_.console.ask(context_.text("cli.quit.question %@", {prompt.appName}),
                                              {"y", "yes", context_.text("cli.answer.yes")});
    if (!goOn) {
        someLeftOut_ = true;
        context_.console.error(context_.text("cli.quit.leftOut %@", {prompt.appName}));
    }
    heedSignals();
    model_.answerQuitPrompt(goOn ? QuitPromptChoice::forceContinue : QuitPromptChoice::cancelApp);
}

void FlowSession::showProgress() {
    auto& console = context_.console;
    const auto& step = model_.progress.get();
    std::string work;
    if (const auto* scanning = std::get_if<stage::Scanning>(&model_.stage())) {
        if (scanning->name.empty())
            work = context_.text("cli.orphans.progress");
        else if (step)
            work = context_.text("cli.scan.progress %@ %@",
                                 {scanning->name, context_.text("category." + step->kind)});
    } else if (const auto* removing = std::get_if<stage::Removing>(&model_.stage());
               removing && !model_.pendingQuitPrompt()) {
        work = context_.text("cli.remove.progress %@", {removing->subject.text(context_.texts)});
    }
    if (work.empty()) return;
    console.progress(step ? labels::progress(work, *step, context_.texts, context_.console.progressColumns())
                          : work);
}

} // namespace tidwen

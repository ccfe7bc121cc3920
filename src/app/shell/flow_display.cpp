#include "app/shell/flow_display.h"

#include "app/screens/leftovers/leftovers_screen.h"
#include "app/screens/report/report_screen.h"
#include "app/screens/review/review_screen.h"
#include "app/widgets/return_key.h"
#include "app/widgets/words.h"
#include "base/byte_sum.h"
#include "removal/removal_phases.h"
#include "scan/applications/installed_app.h"

#include <QStringList>
#include <algorithm>
#include <string>
#include <utility>

namespace tidwen {

void FlowDisplay::expect(std::vector<Path> bundles, RemovalMode mode) {
    lookedAt_ = std::move(bundles);
    beginsWithReset_ = mode == RemovalMode::reset;
}

void FlowDisplay::showStage(Place home) {
    auto& flow = mac_.flow();
    const auto& stage = flow.stage();
    auto& review = screens_.review();
    showError();
    // Also when it is over: the tree would point into findings that are gone.
    if (!std::holds_alternative<stage::Review>(stage) && flow.reviewTrees().empty()) review.update();
    if (std::holds_alternative<stage::Review>(stage)) {
        review.update();
        if (std::exchange(beginsWithReset_, false)) flow.setMode(RemovalMode::reset);
        screens_.turnTo(review);
        returnKey::waitForPause(); // who held it down on the screen before has not seen this one
    } else if (std::holds_alternative<stage::Orphans>(stage)) {
        screens_.leftovers().refresh();
        if (screens_.leftovers().isReady()) screens_.turnTo(home);
    } else if (std::holds_alternative<stage::Report>(stage)) {
        screens_.turnTo(screens_.report());
        screens_.report().update();
    } else if (std::holds_alternative<stage::Scanning>(stage)
               || std::holds_alternative<stage::Removing>(stage)) {
        showWork();
        screens_.turnTo(screens_.work());
    } else {
        screens_.leftovers().refresh();
        screens_.turnTo(home);
    }
}

void FlowDisplay::show(FlowChange change) {
    const auto& stage = mac_.flow().stage();
    switch (change) {
    case FlowChange::phase:
        return showWork();
    case FlowChange::problems:
        return showError();
    case FlowChange::selection:
        showError(); // that of an earlier one is over
        if (std::holds_alternative<stage::Review>(stage)) screens_.review().showSelection();
        if (std::holds_alternative<stage::Orphans>(stage)) screens_.leftovers().refresh();
        return;
    case FlowChange::undo:
        showError();
        return screens_.report().update();
    case FlowChange::stage:
    case FlowChange::listing:
    case FlowChange::prompt:
        return;
    }
}

void FlowDisplay::showWork() {
    auto& flow = mac_.flow();
    const auto& texts = mac_.system().texts;
    const auto& step = flow.progress.get();
    auto& screen = screens_.work();
    const auto* scanning = std::get_if<stage::Scanning>(&flow.stage());
    screen.showPhases(std::holds_alternative<stage::Removing>(flow.stage()) ? flow.phases.get().at(step)
                                                                            : std::vector<RemovalPhase>());
    const bool isSearch = scanning && !scanning->name.empty();
    screen.showApplications(isSearch ? lookedAt(scanning->bundle) : std::vector<WorkScreen::Application>(),
                            isSearch ? scanning->bundle : Path());
    if (isSearch)
        screen.show(wordsForSearch(*scanning, step), step);
    else if (scanning) {
        const auto& found = flow.sweep().snapshot();
        screen.show({words(texts, "cli.orphans.progress"), words(texts, "confirm.cancelButton"),
                     words(texts, "leftovers.found %lld %@",
                           {std::to_string(found.totalCount), found.totalSizeText})},
                    step);
    } else if (const auto* removing = std::get_if<stage::Removing>(&flow.stage()))
        screen.show(
            {words(texts, "cli.remove.progress %@", {shown(removing->subject.text(texts)).toStdString()}),
             words(texts, "removing.stop"),
             words(texts, "removing.note"),
             {},
             mac_.isRunningMac() ? words(texts, "removing.password") : QString()},
            step);
}

WorkScreen::Words FlowDisplay::wordsForSearch(const stage::Scanning& scanning,
                                              const std::optional<StepProgress>& step) const {
    const auto& texts = mac_.system().texts;
    WorkScreen::Words result{
        words(texts, scanning.total > 1 ? "scanning.title.several" : "scanning.title.plain"),
        words(texts, "confirm.cancelButton"),
        words(texts, "scanning.application %@", {shown(scanning.name).toStdString()})};
    if (scanning.total <= 1) return result;
    const double ofStep =
        step && step->total > 0 ? static_cast<double>(step->step) / static_cast<double>(step->total) : 0;
    result.part = (scanning.done + ofStep) / scanning.total;
    QStringList lines = {words(texts, "work.step %lld %lld",
                               {std::to_string(scanning.done + 1), std::to_string(scanning.total)})};
    if (scanning.found > 0)
        lines << words(texts, "leftovers.found %lld %@",
                       {std::to_string(scanning.found), sizeText(scanning.size, texts)});
    result.note += QLatin1Char('\n') + lines.join(QStringLiteral(" · "));
    return result;
}

/// Of many, those around the one at work. As the grid knows them; what it does not list yet by the name of
/// its bundle.
std::vector<WorkScreen::Application> FlowDisplay::lookedAt(const Path& atWork) const {
    constexpr auto most = WorkScreen::mostApplications;
    const auto place = static_cast<std::size_t>(std::ranges::find(lookedAt_, atWork) - lookedAt_.begin());
    const auto first = place < lookedAt_.size() ? place / most * most : 0;
    std::vector<WorkScreen::Application> result;
    const auto& apps = mac_.session().models().homeGrid().apps();
    for (auto i = first; i < std::min(first + most, lookedAt_.size()); ++i) {
        const auto& bundle = lookedAt_[i];
        const auto known = std::ranges::find(apps, bundle, [](const SharedApp& app) { return app->url; });
        if (known != apps.end())
            result.push_back({(*known)->name, (*known)->bundleID, bundle});
        else
            result.push_back({bundle.lastComponent(), {}, bundle});
    }
    return result;
}

/// Only what has changed: the phases of a search leave what is said as it is.
void FlowDisplay::showError() {
    const auto& flow = mac_.flow();
    const auto scanning = Stage(stage::Scanning{}).index();
    const auto before = std::exchange(shownStage_, flow.stage().index());
    if (before != shownStage_ && before != scanning && shownStage_ != scanning) said_.fallSilent();
    auto error = flow.errorMessage();
    if (std::holds_alternative<stage::Report>(flow.stage())) error.reset(); // which says it itself
    said_.showError(error);
}

} // namespace tidwen

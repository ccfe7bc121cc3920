#include "cli/json/startup.h"
#include "base/executor.h"
#include "base/message.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/commands/confirmed_removal.h"
#include "cli/commands/startup_labels.h"
#include "cli/console.h"
#include "cli/flow_session.h"
#include "cli/incomplete_output.h"
#include "cli/suggestion.h"
#include "cli/table.h"
#include "operations/removal_operation.h"
#include "program/mac.h"
#include "program/session.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/trace.h"
#include "scan/permissions/full_disk_access.h"
#include "sweep/location_sweep.h"
#include "system/startup_item.h"
#include "system/startup_items_model.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

constexpr const char* orphansOption = "--orphans";

/// A job that only System Settings switches says so, whether it is off or not.
std::string stateKey(SwitchState state, bool isOff) {
    if (isOff && state == SwitchState::systemSettings) return "cli.startup.state.offInSystemSettings";
    return "cli.startup.state." + std::string(isOff ? "off" : name(state));
}

/// Runs the model of the startup items' screen through each of its steps.
class StartupSession {
  public:
    StartupSession(const CommandContext& context, Mac& mac)
        : context_(context),
          mac_(mac),
          session_(mac, main_, InstalledBundles::Looks::once),
          model_(session_.models().startupItems()) {
        wait([this](auto done) { model_.load(done); });
    }

    std::vector<std::string> labels() const {
        std::vector<std::string> labels;
        for (const auto& item : model_.result.get().items)
            labels.push_back(item.label);
        return labels;
    }

    ExitStatus list() {
        if (context_.arguments.json)
            context_.console.document(json::document(model_));
        else
            print();
        return isComplete() ? ExitStatus::done : ExitStatus::someFailed;
    }

    /// `words`: labels or paths of property lists, as listed.
    ExitStatus switchJobs(const std::vector<std::string>& words, bool on) {
        std::vector<const StartupItem*> chosen;
        for (const auto& word : words) {
            const auto item = find(word);
            if (!item) return refuseUnseen(item.error());
            chosen.push_back(*item);
        }
        for (const auto* item : chosen)
            if (const auto why = model_.whyNoSwitch(*item))
                return context_.refuse(
                    {"cli.startup.noSwitch %@ %@", {item->label, context_.texts.text(*why)}});
        if (const auto closed = whyNothingMoves(mac_.system.user, mac_.system.files))
            return context_.refuse(*closed);
        auto status = ExitStatus::done;
        for (const auto* item : chosen) {
            if (model_.disabled.get().contains(item->id()) != on) {
                if (!context_.arguments.json)
                    context_.console.line(context_.text(
                        on ? "cli.startup.onAlready %@" : "cli.startup.offAlready %@", {item->label}));
                continue;
            }
            model_.toggleError.set(std::nullopt);
            wait([&](auto done) { model_.setEnabled(*item, on, done); });
            if (const auto& error = model_.toggleError.get()) {
                context_.console.error(item->label + ": " + context_.texts.text(*error));
                status = ExitStatus::someFailed;
            } else if (!context_.arguments.json) {
                context_.console.line(
                    context_.text(on ? "cli.startup.on %@" : "cli.startup.off %@", {item->label}));
            }
        }
        if (context_.arguments.json) context_.console.document(json::document(model_));
        return status;
    }

    ExitStatus remove(const std::vector<std::string>& words) {
        if (context_.arguments.has(orphansOption)) selectOrphans();
        for (const auto& word : words) {
            const auto found = find(word);
            if (!found) return refuseUnseen(found.error());
            const auto& item = **found;
            if (const auto why = model_.whyItStays(item))
                return context_.refuse(
                    {"cli.startup.notRemovable %@ %@", {item.label, context_.texts.text(*why)}});
            if (!model_.selection.get().contains(item.id())) model_.toggleSelection(item);
        }
        std::vector<Trace> traces;
        for (const auto& item : model_.selectedItems())
            if (auto trace = startupTrace(item)) traces.push_back(std::move(*trace));
        measureTraces(mac_.system.files, traces, {});
        reportUnreadable();
        if (traces.empty() && !isComplete()) return ExitStatus::refused;
        // The jobs were selected by name or as orphans, so their risk does not matter.
        FlowSession flow(context_, mac_);
        flow.model().show(stage::StartupItems{});
        flow.model().offer(context_.text("cli.startup.title"), std::move(traces), model_.selectedInUse());
        const auto status = removeFound(context_, mac_, flow, RemovalMode::uninstall, Chosen::all);
        return status == ExitStatus::done && !isComplete() ? ExitStatus::someFailed : status;
    }

  private:
    void selectOrphans() {
        model_.toggleSelectAllOrphans();
        for (const auto& item : model_.selectedItems())
            if (!hasLostProgram(item)) model_.toggleSelection(item);
    }

    template<class Step>
    void wait(const Step& step) {
        bool isDone = false;
        step([&isDone] { isDone = true; });
        main_.runUntil([&isDone] { return isDone; });
    }

    /// The item with this label or identifier; the error if there is none or more than one.
    tl::expected<const StartupItem*, Message> find(const std::string& word) const {
        const auto named = model_.itemsNamed(word);
        if (named.empty()) return tl::unexpected(unknown(word));
        if (named.size() == 1) return named.front();
        std::string files;
        for (const auto* item : named)
            files += (files.empty() ? "" : ", ") + item->id();
        return tl::unexpected(Message{"cli.startup.ambiguous %@ %@", {word, files}});
    }

    Message unknown(const std::string& word) const {
        const auto meant = closest(word, labels());
        return meant ? Message{"cli.startup.similar %@ %@", {word, *meant}}
                     : Message{"cli.startup.unknown %@", {word}};
    }

    ExitStatus refuseUnseen(const Message& reason) const {
        reportUnreadable();
        return context_.refuse(reason);
    }

    void reportUnreadable() const {
        for (const auto& folder : model_.result.get().unreadable)
            context_.error({"cli.unreadable %@", {folder.string()}});
        const auto leftOut = model_.result.get().leftOut;
        if (leftOut > 0) context_.error({"cli.leftOut %lld", {std::to_string(leftOut)}});
    }

    bool isComplete() const {
        const auto& result = model_.result.get();
        return result.unreadable.empty() && result.leftOut == 0;
    }

    void print() {
        const auto& result = model_.result.get();
        std::map<std::string, std::size_t> uses;
        for (const auto& item : result.items)
            ++uses[item.label];
        for (const auto& [part, key] :
             {std::pair(StartupSection::orphans, "startup.section.orphans"),
              std::pair(StartupSection::unattributed, "startup.section.unattributed"),
              std::pair(StartupSection::owned, "startup.section.owned")}) {
            Table table;
            for (const auto& item : result.items)
                if (section(item) == part) table.add(row(item, uses[item.label] > 1));
            if (table.empty()) continue;
            context_.console.line(context_.text(key), Style::strong);
            table.print(context_.console, 2);
        }
        for (const auto& folder : result.unreadable)
            context_.console.line(context_.text("cli.unreadable %@", {folder.string()}), Style::caution);
        printIncomplete(result.leftOut, {}, context_);
        if (result.items.empty()) context_.console.line(context_.text("startup.empty.title"));
    }

    /// `isShared`: another job has the same label, so only the path tells them apart.
    std::vector<StyledText> row(const StartupItem& item, bool isShared) const {
        const bool isOff = model_.disabled.get().contains(item.id());
        return {
            {context_.text(stateKey(model_.switchState(item), isOff)), isOff ? Style::caution : Style::faint},
            {item.label, Style::strong},
            {item.isSystemDomain ? context_.text("startup.badge.daemon") : "", Style::faint},
            {model_.ownerText(item), Style::faint},
            {isShared ? item.id() : "", Style::faint}};
    }

    const CommandContext& context_;
    Mac& mac_;
    MainQueue main_;
    Session session_;
    StartupItemsModel& model_;
};

ExitStatus runStartup(const CommandContext& context, Mac& mac) {
    const auto& words = context.arguments.operands;
    const std::string action = words.empty() ? "list" : words.front();
    const std::vector<std::string> jobs(words.empty() ? words.end() : words.begin() + 1, words.end());
    const bool isKnown = action == "list" || action == "on" || action == "off" || action == "remove";
    if (!isKnown) return context.misuseOfAction(action);
    const bool takesOrphans = action == "remove" && context.arguments.has(orphansOption);
    const bool isIdle =
        action != "remove" && (context.arguments.has("--dry-run") || context.arguments.has(orphansOption));
    if (isIdle)
        return context.misuse({"cli.startup.idleOption %@",
                               {context.arguments.has("--dry-run") ? "--dry-run" : orphansOption}});
    if ((action == "list") != (jobs.empty() && !takesOrphans)) return context.misuseOfAction(action);
    StartupSession session(context, mac);
    if (action == "list") return session.list();
    if (action == "remove") return session.remove(jobs);
    return session.switchJobs(jobs, action == "on");
}

} // namespace

std::vector<std::string> startupLabels(const CommandContext& context, Mac& mac) {
    return StartupSession(context, mac).labels();
}

Command startupCommand() {
    return {.syntax = {.name = "startup",
                       .summary = "cli.help.startup",
                       .operandName = "ACTION",
                       .maximumOperands = anyNumber,
                       .options = {{orphansOption, "", "cli.help.startup.orphans"},
                                   {"--dry-run", "", "cli.help.startup.dryRun"}},
                       .actions = {{"list", "cli.help.startup.list"},
                                   {"on JOB...", "cli.help.startup.on"},
                                   {"off JOB...", "cli.help.startup.off"},
                                   {"remove JOB...", "cli.help.startup.remove"}}},
            .run = runStartup};
}

} // namespace tidwen

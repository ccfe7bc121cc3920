#include "system/startup_items_model.h"

#include "base/background_step.h"
#include "base/path.h"
#include "base/text.h"
#include "operations/screened_move.h"
#include "scan/applications/launch_item.h"
#include "scan/policy/trace_category.h"
#include "system/startup_item.h"

#include <algorithm>
#include <string_view>
#include <tl/expected.hpp>
#include <utility>
#include <variant>

namespace tidwen {

namespace {

using OwnerKind = StartupItem::Owner::Kind;

template<class T>
std::set<T> with(std::set<T> values, const T& value) {
    values.insert(value);
    return values;
}

template<class T>
std::set<T> without(std::set<T> values, const T& value) {
    values.erase(value);
    return values;
}

const std::string& ownerName(const StartupItem& item) {
    return item.owner.name.empty() ? item.label : item.owner.name;
}

} // namespace

std::string_view name(SwitchState state) {
    switch (state) {
    case SwitchState::none:
        return "none";
    case SwitchState::on:
        return "on";
    case SwitchState::off:
        return "off";
    case SwitchState::switching:
        return "switching";
    case SwitchState::systemSettings:
        return "systemSettings";
    }
    return "none";
}

std::set<std::string> disabledItems(const std::vector<StartupItem>& items, const Launchd& launchd,
                                    const FileSystem& files) {
    const auto system = launchd.disabledOverrides(true);
    const auto user = launchd.disabledOverrides(false);
    std::set<std::string> result;
    for (const auto& item : items) {
        const auto& overrides = item.isSystemDomain ? system : user;
        const auto found = overrides.find(item.label);
        const bool isDisabled =
            found != overrides.end() ? found->second : item.plist() && declaresDisabled(files, *item.plist());
        if (isDisabled) result.insert(item.id());
    }
    return result;
}

std::optional<Trace> startupTrace(const StartupItem& item) {
    const auto* source = std::get_if<StartupItem::Plist>(&item.source);
    if (!source) return std::nullopt;
    const auto& plist = source->url;
    // The machine's own agents are in a folder that only an administrator may change.
    const bool requiresRoot = plist.isWithin(Path("/Library"));
    auto trace =
        makeTrace(TraceCategory::launchItems, action::BootoutAndMove{item.label, plist, item.isSystemDomain},
                  {MatchReason::Kind::exactBundleID, item.label}, Reversibility::reversible, plist.string(),
                  std::nullopt, requiresRoot);
    trace.found = source->found;
    if (section(item) != StartupSection::orphans) trace.risk = TraceRisk::review; // its program may be needed
    return trace;
}

StartupItemsModel::StartupItemsModel(Ports ports, Inventory inventory)
    : ports_(ports), inventory_(std::move(inventory)) {
    follow();
}

StartupItemsModel::~StartupItemsModel() = default;

void StartupItemsModel::follow() {
    for (auto* ids : {&selection, &disabled, &switching})
        following_.push_back(ids->observe([this](const auto&) { show(); }));
    following_.push_back(ports_.protectedApps.changed.connect([this](const auto&) {
        dropUnselectable();
        show();
    }));
}

void StartupItemsModel::load(std::function<void()> done) {
    if (done) done_.push_back(std::move(done));
    if (std::exchange(isBusy_, true)) return;
    isLoading.set(true);
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&scanner = ports_.scanner, inventory = inventory_, locale = ports_.texts.language()] {
            return scanner.scan(inventory, locale);
        },
        [](StartupItemsModel& self, StartupScanResult scanned) {
            self.result.set(std::move(scanned));
            self.show();
            self.refreshDisabled([&self] { self.endLoading(); });
        });
}

void StartupItemsModel::endLoading() {
    isBusy_ = false;
    dropUnselectable();
    isLoading.set(false);
    for (const auto& done : std::exchange(done_, {}))
        done();
}

/// Drops items that are gone or may no longer be removed.
void StartupItemsModel::dropUnselectable() {
    std::set<std::string> selectable;
    for (const auto& item : result.get().items)
        if (isSelectable(item)) selectable.insert(item.id());
    auto kept = selection.get();
    std::erase_if(kept, [&](const auto& id) { return !selectable.contains(id); });
    selection.set(std::move(kept));
}

void StartupItemsModel::show() {
    std::vector<StartupItemRow> shown;
    for (const auto& item : result.get().items) {
        const auto id = item.id();
        shown.push_back({.item = item,
                         .switchState = switchState(item),
                         .isOff = disabled.get().contains(id),
                         .isSelected = selection.get().contains(id),
                         .isSelectable = isSelectable(item),
                         .isProtected = isProtected(item)});
    }
    rows.assign(std::move(shown));
}

void StartupItemsModel::refreshDisabled(std::function<void()> done) {
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [ports = ports_, items = result.get().items] {
            return disabledItems(items, ports.launchd, ports.files);
        },
        [done = std::move(done)](StartupItemsModel& self, std::set<std::string> found) {
            self.disabled.set(std::move(found));
            if (done) done();
        });
}

bool StartupItemsModel::isProtected(const StartupItem& item) const {
    if (item.owner.kind == OwnerKind::installed) return ports_.protectedApps.contains(item.owner.bundleID);
    // Its application may be on a disk that is away.
    return ports_.protectedApps.containsOwner(item.label);
}

std::optional<Message> StartupItemsModel::whyItStays(const StartupItem& item) const {
    if (item.owner.kind == OwnerKind::apple) return Message{"startup.noSwitch.apple"};
    if (isProtected(item)) return Message{"error.protectedApp %@", {ownerName(item)}};
    if (const auto* embedded = std::get_if<StartupItem::Embedded>(&item.source))
        return Message{"startup.stays.embedded %@", {embedded->appName}};
    return std::nullopt;
}

void StartupItemsModel::toggleSelection(const StartupItem& item) {
    if (!isSelectable(item)) return;
    const auto id = item.id();
    selection.set(selection.get().contains(id) ? without(selection.get(), id) : with(selection.get(), id));
}

StartupItemsModel::InUse StartupItemsModel::selectedInUse() const {
    return [&scanner = ports_.scanner, inventory = inventory_, chosen = selectedItems()] {
        const auto now = scanner.scan(inventory);
        std::map<Path, Message> inUse;
        for (const auto& item : chosen) {
            const auto same = std::ranges::find_if(
                now.items, [&](const auto& other) { return item.plist() && other.id() == item.id(); });
            if (same == now.items.end()) continue;
            if (same->label != item.label)
                inUse.emplace(*item.plist(), Message{changedSinceKey});
            else if (same->owner != item.owner && same->owner.kind != OwnerKind::missing)
                inUse.emplace(*item.plist(), Message{"failure.inUseSince"});
        }
        return inUse;
    };
}

void StartupItemsModel::toggleSelectAllOrphans() {
    std::set<std::string> orphans;
    for (const auto& item : result.get().items)
        if (section(item) == StartupSection::orphans && isSelectable(item)) orphans.insert(item.id());
    auto chosen = selection.get();
    if (std::includes(chosen.begin(), chosen.end(), orphans.begin(), orphans.end()))
        std::erase_if(chosen, [&](const auto& id) { return orphans.contains(id); });
    else
        chosen.insert(orphans.begin(), orphans.end());
    selection.set(std::move(chosen));
}

std::vector<StartupItem> StartupItemsModel::selectedItems() const {
    std::vector<StartupItem> chosen;
    for (const auto& item : result.get().items)
        if (selection.get().contains(item.id())) chosen.push_back(item);
    return chosen;
}

SwitchState StartupItemsModel::switchState(const StartupItem& item) const {
    if (whyNoSwitch(item))
        return item.owner.kind != OwnerKind::apple && item.isEmbedded() ? SwitchState::systemSettings
                                                                        : SwitchState::none;
    if (switching.get().contains(item.id())) return SwitchState::switching;
    return disabled.get().contains(item.id()) ? SwitchState::off : SwitchState::on;
}

std::optional<Message> StartupItemsModel::whyNoSwitch(const StartupItem& item) const {
    if (item.owner.kind == OwnerKind::apple) return Message{"startup.noSwitch.apple"};
    if (item.isEmbedded()) return Message{"startup.toggle.systemSettings.help"};
    if (item.owner.kind == OwnerKind::missing) return Message{"startup.noSwitch.missing"};
    return std::nullopt;
}

void StartupItemsModel::setEnabled(const StartupItem& item, bool on, std::function<void()> done) {
    const auto id = item.id();
    const auto state = switchState(item);
    if (state != SwitchState::on && state != SwitchState::off) {
        if (done) ports_.main.post(std::move(done));
        return;
    }
    switching.set(with(switching.get(), id));
    using Outcome = tl::expected<void, LaunchdError>;
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&launchd = ports_.launchd, item, on] {
            return launchd.setEnabled(on, item.label, *item.plist(), item.isSystemDomain);
        },
        [id, done = std::move(done)](StartupItemsModel& self, const Outcome& outcome) {
            if (!outcome && outcome.error().kind != LaunchdError::Kind::authorizationCancelled)
                self.toggleError.set(outcome.error().message);
            self.refreshDisabled([&self, id, done] {
                self.switching.set(without(self.switching.get(), id));
                if (done) done();
            });
        }); // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the inner function frees its copy
}

std::vector<const StartupItem*> StartupItemsModel::itemsNamed(const std::string& labelOrID) const {
    std::vector<const StartupItem*> named;
    for (const auto& item : result.get().items) {
        if (item.id() == labelOrID) return {&item};
        if (item.label == labelOrID) named.push_back(&item);
    }
    return named;
}

std::string StartupItemsModel::ownerText(const StartupItem& item) const {
    const auto& owner = item.owner;
    const auto& texts = ports_.texts;
    if (isProtected(item)) return texts.text("startup.owner.protected %@", {ownerName(item)});
    switch (owner.kind) {
    case OwnerKind::installed:
        if (const auto* embedded = std::get_if<StartupItem::Embedded>(&item.source))
            return texts.text("startup.owner.embedded %@", {embedded->appName});
        return texts.text("startup.owner.installed %@", {owner.name});
    case OwnerKind::related:
        return texts.text("startup.owner.related %@", {owner.name});
    case OwnerKind::registered:
        return texts.text("startup.owner.registered %@", {owner.bundleID});
    case OwnerKind::program:
        return texts.text("startup.owner.program %@", {owner.path});
    case OwnerKind::apple:
        return texts.text("startup.owner.apple");
    case OwnerKind::missing:
        return item.programPath ? texts.text("startup.owner.missingProgram %@", {*item.programPath})
                                : texts.text("startup.owner.missing");
    case OwnerKind::unknown:
        return texts.text("startup.owner.unknown");
    }
    return {};
}

} // namespace tidwen

#include "inventory/home_grid_model.h"

#include "base/background_step.h"
#include "base/batched_delivery.h"
#include "base/byte_sum.h"
#include "base/path.h"
#include "scan/applications/installed_app.h"
#include "settings/app_preferences.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace tidwen {

namespace {

/// The result of one look at the disk.
struct Listed {
    std::vector<SharedApp> apps;
    std::vector<Path> unreadable;
    std::uint64_t leftOut = 0;
};

HomeRow heading(const HomeGroup& group) {
    return {.groupID = group.id, .app = nullptr, .count = group.apps.size(), .size = group.size};
}

SharedApp share(InstalledApp app) {
    return std::make_shared<const InstalledApp>(std::move(app));
}

/// Replaces an application by one that differs; whoever holds the old one keeps it.
template<class Change>
void edit(SharedApp& app, const Change& change) {
    auto edited = *app;
    change(edited);
    if (edited != *app) app = share(std::move(edited));
}

std::map<Path, SharedApp> byPath(const std::vector<SharedApp>& apps) {
    std::map<Path, SharedApp> result;
    for (const auto& app : apps)
        result.emplace(app->url, app);
    return result;
}

} // namespace

HomeGridModel::HomeGridModel(Ports ports) : ports_(ports) {
    follow();
}

HomeGridModel::~HomeGridModel() {
    stop_.requestStop();
}

void HomeGridModel::follow() {
    auto& preferences = ports_.preferences;
    const auto read = [this] {
        options_.grouping = homeGrouping(ports_.preferences.homeGrouping.get());
        options_.sort = homeSort(ports_.preferences.homeSort.get());
        options_.threshold = unusedThreshold(ports_.preferences.unusedThreshold.get());
    };
    read();
    const auto readAndArrange = [this, read](const std::string&) {
        read();
        arrange();
    };
    for (auto* preference : {&preferences.homeGrouping, &preferences.homeSort, &preferences.unusedThreshold})
        following_.push_back(preference->observe(readAndArrange));
    following_.push_back(ports_.tags.changed.connect([this](const auto&) { arrange(); }));
    following_.push_back(ports_.protectedApps.changed.connect([this](const auto&) { arrange(); }));
}

void HomeGridModel::setOptions(HomeGridOptions options) {
    options_ = std::move(options);
    arrange();
}

void HomeGridModel::load(std::function<void()> done) {
    if (done) done_.push_back(std::move(done));
    if (!isBusy_) return list();
    isAskedAgain_ = true;
    run_ = nullptr;
    stop_.requestStop();
}

void HomeGridModel::cancel() {
    isAskedAgain_ = false;
    stop_.requestStop();
}

void HomeGridModel::list() {
    isBusy_ = true;
    isAskedAgain_ = false;
    stop_ = StopSource();
    run_ = std::make_shared<bool>(true);
    phase.set(Phase::listing);
    const auto stream = std::make_shared<BatchedDelivery<InstalledApp>>(
        ports_.main, [this, run = std::weak_ptr(run_)](std::vector<InstalledApp> found) {
            if (!run.expired()) takeStreamed(std::move(found));
        });
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&inventory = ports_.inventory, stop = stop_.token(), stream, locale = ports_.texts.language()] {
            Listed listed;
            auto apps = inventory.build(
                stop, [&](const InstalledApp& app) { stream->add(app); }, locale);
            std::ranges::transform(apps, std::back_inserter(listed.apps),
                                   [](InstalledApp& app) { return share(std::move(app)); });
            listed.unreadable = inventory.unreadable();
            listed.leftOut = inventory.leftOut();
            return listed;
        },
        [](HomeGridModel& self, Listed listed) {
            if (self.stop_.token().stopRequested()) return self.end(Phase::idle);
            self.inventory.set({.unreadable = std::move(listed.unreadable), .leftOut = listed.leftOut});
            self.apps_ = std::move(listed.apps);
            self.countInventory();
            self.arrange();
            self.measure();
        });
}

/// Only applications not shown before: more is known of the others than what is streamed.
void HomeGridModel::takeStreamed(std::vector<InstalledApp> found) {
    std::set<Path> shown;
    for (const auto& app : apps_)
        shown.insert(app->url);
    for (auto& app : found)
        if (!shown.contains(app.url)) apps_.push_back(share(std::move(app)));
    countInventory();
    arrange();
}

void HomeGridModel::measure() {
    phase.set(Phase::measuring);
    const auto stream = std::make_shared<BatchedDelivery<InstalledApp>>(
        ports_.main, [this, run = std::weak_ptr(run_)](const std::vector<InstalledApp>& measured) {
            if (!run.expired()) takeSizes(measured);
        });
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&inventory = ports_.inventory, stop = stop_.token(), stream, apps = apps_] {
            std::vector<InstalledApp> own;
            own.reserve(apps.size());
            for (const auto& app : apps)
                own.push_back(*app);
            inventory.measure(own, stop, [&](const InstalledApp& app) { stream->add(app); });
            return true;
        },
        [](HomeGridModel& self, bool) {
            self.arrange(); // once, now that every size is known
            self.end(Phase::ready);
        });
}

void HomeGridModel::end(Phase reached) {
    isBusy_ = false;
    if (isAskedAgain_) return list();
    phase.set(reached);
    for (const auto& done : std::exchange(done_, {}))
        done();
}

void HomeGridModel::takeSizes(const std::vector<InstalledApp>& measured) {
    std::map<Path, const InstalledApp*> sizes;
    for (const auto& app : measured)
        sizes.emplace(app.url, &app);
    for (auto& app : apps_)
        if (const auto found = sizes.find(app->url); found != sizes.end())
            edit(app, [&](InstalledApp& edited) {
                edited.sizeBytes = found->second->sizeBytes;
                edited.isSizePartial = found->second->isSizePartial;
            });
    countInventory();
    updateShown();
}

void HomeGridModel::refreshRunning(std::function<void()> done) {
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&inventory = ports_.inventory, apps = apps_] { return inventory.running(apps); },
        [done = std::move(done)](HomeGridModel& self, const std::set<std::string>& running) {
            for (auto& app : self.apps_)
                if (app->usage)
                    edit(app, [&](InstalledApp& edited) {
                        edited.usage->isRunning = running.contains(edited.bundleID);
                    });
            self.updateShown();
            if (done) done();
        });
}

void HomeGridModel::arrange() {
    const auto groups = arrangeHomeGrid(apps_, options_, ports_.tags, ports_.protectedApps, ports_.texts,
                                        ports_.clock.now(), names_);
    std::vector<HomeRow> arranged;
    for (const auto& group : groups) {
        arranged.push_back(heading(group));
        for (const auto& app : group.apps)
            arranged.push_back({.groupID = group.id,
                                .app = app,
                                .isProtected = ports_.protectedApps.contains(app->bundleID),
                                .tags = ports_.tags.tags(app->bundleID)});
    }
    rows.assign(std::move(arranged));
}

/// Shows what is now known of each application, without moving its row.
void HomeGridModel::updateShown() {
    const auto known = byPath(apps_);
    std::map<std::string, ByteSum> sizes;
    for (std::size_t i = 0; i < rows.rows().size(); ++i) {
        auto row = rows.rows()[i];
        const auto app = row.app ? known.find(row.app->url) : known.end();
        if (app == known.end()) continue;
        row.app = app->second;
        sizes[row.groupID].add(row.app->sizeBytes, row.app->isSizePartial);
        rows.update(i, std::move(row));
    }
    for (std::size_t i = 0; i < rows.rows().size(); ++i) {
        auto row = rows.rows()[i];
        if (row.app) continue;
        row.size = sizes[row.groupID];
        rows.update(i, std::move(row));
    }
}

void HomeGridModel::countInventory() {
    auto counted = inventory.get();
    counted.count = apps_.size();
    counted.size = {};
    for (const auto& app : apps_)
        counted.size.add(app->sizeBytes, app->isSizePartial);
    inventory.set(std::move(counted));
}

} // namespace tidwen

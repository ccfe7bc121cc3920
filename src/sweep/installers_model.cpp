#include "sweep/installers_model.h"

#include "base/background_step.h"
#include "base/batched_delivery.h"
#include "base/path.h"
#include "base/text.h"
#include "base/timestamp.h"
#include "platform/file_system.h"
#include "scan/matching/trace.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace tidwen {

InstallersModel::InstallersModel(Ports ports, Inventory inventory)
    : ports_(std::move(ports)), inventory_(std::move(inventory)) {}

InstallersModel::~InstallersModel() {
    stop_.requestStop();
}

void InstallersModel::load(std::function<void()> done) {
    if (done) done_.push_back(std::move(done));
    if (!isLoading.set(true)) return;
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&files = ports_.files, user = ports_.user, inventory = inventory_] {
            return listInstallers(files, user, inventory());
        },
        [](InstallersModel& self, InstallerScanResult found) {
            self.result.set(std::move(found));
            self.select(self.selection.get());
            self.arrange();
            self.measure();
        });
}

void InstallersModel::measure() {
    std::vector<Path> packages;
    for (const auto& file : result.get().files)
        if (file.isFolder) packages.push_back(file.url);
    const auto stream = std::make_shared<BatchedDelivery<Size>>(
        ports_.main, [this, alive = std::weak_ptr(alive_)](const std::vector<Size>& sizes) {
            if (!alive.expired()) takeSizes(sizes);
        });
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&files = ports_.files, packages = std::move(packages), stream, stop = stop_.token()] {
            for (const auto& package : packages)
                if (const auto size = measurePackage(files, package, stop)) stream->add({package, *size});
            return true;
        },
        [](InstallersModel& self, bool) { self.endLoading(); });
}

void InstallersModel::takeSizes(const std::vector<Size>& sizes) {
    std::map<Path, TreeSize> byPath;
    for (const auto& size : sizes)
        byPath.emplace(size.url, size.size);
    auto found = result.get();
    for (auto& file : found.files)
        if (const auto size = byPath.find(file.url); size != byPath.end()) setSize(file, size->second);
    result.set(std::move(found));
    showValues();
}

void InstallersModel::endLoading() {
    auto found = result.get();
    sortBySize(found.files);
    result.set(std::move(found));
    arrange();
    hasLoaded.set(true);
    isLoading.set(false);
    for (const auto& done : std::exchange(done_, {}))
        done();
}

void InstallersModel::setOrder(Order order) {
    order_ = order;
    arrange();
}

void InstallersModel::arrange() {
    const auto& locale = ports_.texts.language();
    std::vector<std::pair<std::string, InstallerRow>> keyed;
    for (const auto& file : result.get().files)
        keyed.emplace_back(displayOrderKey(file.url.lastComponent(), locale),
                           InstallerRow{file, selection.get().contains(file.url)});
    std::stable_sort(keyed.begin(), keyed.end(), [&](const auto& a, const auto& b) {
        const auto &one = a.second.file, &other = b.second.file;
        if (one.installedApp.has_value() != other.installedApp.has_value())
            return one.installedApp.has_value();
        if (order_ == Order::name) return a.first < b.first;
        if (order_ == Order::date)
            return one.addedAt.value_or(Timestamp{}) > other.addedAt.value_or(Timestamp{});
        return one.sizeBytes.value_or(0) > other.sizeBytes.value_or(0);
    });
    std::vector<InstallerRow> arranged;
    for (auto& [key, row] : keyed)
        arranged.push_back(std::move(row));
    rows.assign(std::move(arranged));
}

/// Shows what is now known of each file, without moving its row.
void InstallersModel::showValues() {
    std::map<Path, const InstallerFile*> byPath;
    for (const auto& file : result.get().files)
        byPath.emplace(file.url, &file);
    for (std::size_t i = 0; i < rows.rows().size(); ++i)
        if (const auto file = byPath.find(rows.rows()[i].file.url); file != byPath.end())
            rows.update(i, {*file->second, selection.get().contains(file->first)});
}

/// Ignores what is not in the list.
void InstallersModel::select(std::set<Path> chosen) {
    std::set<Path> kept;
    for (const auto& file : result.get().files)
        if (chosen.contains(file.url)) kept.insert(file.url);
    if (selection.set(std::move(kept))) showValues();
}

void InstallersModel::toggleSelection(const Path& url) {
    auto chosen = selection.get();
    if (chosen.erase(url) == 0) chosen.insert(url);
    select(std::move(chosen));
}

void InstallersModel::toggleSelectAllMatched() {
    auto chosen = selection.get();
    const auto before = chosen.size();
    std::set<Path> matched;
    for (const auto& file : result.get().files)
        if (file.installedApp) matched.insert(file.url);
    chosen.insert(matched.begin(), matched.end());
    if (chosen.size() == before)
        std::erase_if(chosen, [&](const auto& url) { return matched.contains(url); });
    select(std::move(chosen));
}

std::vector<InstallerFile> InstallersModel::selectedFiles() const {
    std::vector<InstallerFile> chosen;
    for (const auto& file : result.get().files)
        if (selection.get().contains(file.url)) chosen.push_back(file);
    return chosen;
}

std::vector<Trace> InstallersModel::selectedTraces() const {
    std::vector<Trace> traces;
    for (const auto& file : selectedFiles())
        traces.push_back(installerTrace(file));
    return traces;
}

} // namespace tidwen

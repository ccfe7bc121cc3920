#include "system/trash_watcher.h"

#include "base/path.h"

#include <algorithm>
#include <chrono>

namespace tidwen {
namespace {

/// The application bundles directly in the Trash; nullopt when it cannot be listed, which is not the same as
/// empty.
std::optional<std::vector<Path>> listBundles(const FileSystem& files, const Path& trash) {
    const auto entries = files.list(trash);
    if (!entries) return std::nullopt;
    std::vector<Path> bundles;
    for (const auto& entry : *entries)
        if (const Path url = trash / entry.name;
            !entry.name.starts_with('.') && url.lowercasedExtension() == "app")
            bundles.push_back(url);
    return bundles;
}

std::set<std::string> names(const std::vector<Path>& bundles) {
    std::set<std::string> result;
    for (const auto& url : bundles)
        result.insert(url.lastComponent());
    return result;
}

} // namespace

/// What the last look saw. Shared with looks that are still queued when the watcher is destroyed.
struct TrashWatcher::State {
    std::mutex mutex;
    bool isWatching = false;
    std::optional<std::set<std::string>> known; ///< nullopt while the Trash could not be listed
    Timestamp startedAt{};
    OnNewApps onNewApps;

    bool cameAfterStart(const FileSystem& files, const Path& url) const {
        const auto info = files.info(url);
        const auto start = std::chrono::nanoseconds(startedAt.time_since_epoch()).count();
        return info && info->addedNanoseconds && *info->addedNanoseconds > start;
    }

    std::vector<Path> look(const FileSystem& files, const Path& trash) {
        const std::lock_guard lock(mutex);
        const auto bundles = isWatching ? listBundles(files, trash) : std::nullopt;
        if (!bundles) return {};
        std::vector<Path> fresh;
        for (const auto& url : *bundles)
            if (known ? !known->contains(url.lastComponent()) : cameAfterStart(files, url))
                fresh.push_back(url);
        known = names(*bundles);
        return fresh;
    }
};

TrashWatcher::TrashWatcher(Ports ports, Path trash, OnNewApps onNewApps)
    : ports_(ports), trash_(std::move(trash)), state_(std::make_shared<State>()) {
    state_->onNewApps = std::move(onNewApps);
}

TrashWatcher::~TrashWatcher() {
    stop();
}

void TrashWatcher::start() {
    if (watch_) return;
    {
        const std::lock_guard lock(state_->mutex);
        state_->isWatching = true;
        state_->startedAt = ports_.clock.now();
        const auto bundles = listBundles(ports_.files, trash_);
        state_->known = bundles ? std::optional(names(*bundles)) : std::nullopt;
    }
    watch_ = ports_.events.watch(trash_, [ports = ports_, trash = trash_, state = state_] {
        ports.queue.post([ports, trash, state] {
            auto fresh = state->look(ports.files, trash);
            if (fresh.empty()) return;
            ports.main.post([weak = std::weak_ptr(state), fresh = std::move(fresh)] {
                if (const auto alive = weak.lock(); alive && alive->isWatching) alive->onNewApps(fresh);
            });
        });
    });
    if (watch_)
        ports_.log.write(LogLevel::debug, "Watching the Trash");
    else
        ports_.log.error("Could not start the Trash event stream");
}

void TrashWatcher::stop() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->isWatching = false;
    }
    if (!watch_) return;
    watch_.reset();
    ports_.log.write(LogLevel::debug, "Stopped watching the Trash");
}

} // namespace tidwen

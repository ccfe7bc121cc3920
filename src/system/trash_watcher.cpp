#include "system/trash_watcher.h"

#include "base/path.h"

#include <algorithm>
#include <atomic>
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

/// Shared with looks that are still queued when the watcher is destroyed.
struct TrashWatcher::State {
    std::atomic<unsigned> watch = 0; ///< number of the current watch; 0 when stopped
    OnNewApps onNewApps;

    // What the last look saw; used on the queue alone.
    std::optional<std::set<std::string>> known; ///< nullopt while the Trash could not be listed
    Timestamp startedAt{};

    bool cameAfterStart(const FileSystem& files, const Path& url) const {
        const auto info = files.info(url);
        const auto start = std::chrono::nanoseconds(startedAt.time_since_epoch()).count();
        return info && info->addedNanoseconds && *info->addedNanoseconds > start;
    }

    void begin(const FileSystem& files, const Path& trash, Timestamp now) {
        startedAt = now;
        auto bundles = listBundles(files, trash);
        // What came while this waited for the queue is new.
        if (bundles) std::erase_if(*bundles, [&](const Path& url) { return cameAfterStart(files, url); });
        known = bundles ? std::optional(names(*bundles)) : std::nullopt;
    }

    std::vector<Path> look(const FileSystem& files, const Path& trash) {
        const auto bundles = listBundles(files, trash);
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
    const auto number = ++watches_;
    state_->watch = number;
    ports_.queue.post([ports = ports_, trash = trash_, state = state_, now = ports_.clock.now()] {
        state->begin(ports.files, trash, now);
    });
    watch_ = ports_.events.watch(trash_, [ports = ports_, trash = trash_, state = state_, number] {
        ports.queue.post([ports, trash, state, number] {
            if (state->watch != number) return;
            auto fresh = state->look(ports.files, trash);
            if (fresh.empty()) return;
            ports.main.post([weak = std::weak_ptr(state), number, fresh = std::move(fresh)] {
                if (const auto alive = weak.lock(); alive && alive->watch == number) alive->onNewApps(fresh);
            });
        });
    });
    if (watch_)
        ports_.log.write(LogLevel::debug, "Watching the Trash");
    else
        ports_.log.error("Could not start the Trash event stream");
}

void TrashWatcher::stop() {
    state_->watch = 0;
    if (!watch_) return;
    watch_.reset();
    ports_.log.write(LogLevel::debug, "Stopped watching the Trash");
}

} // namespace tidwen

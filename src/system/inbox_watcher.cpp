#include "system/inbox_watcher.h"

#include "base/background_step.h"
#include "platform/file_system.h"

#include <utility>

namespace tidwen {

/// One look with everything it needs, because it may outlive the watcher.
struct InboxWatcher::FolderTask {
    Ports ports;
    RequestInbox inbox;
    std::optional<FolderIdentity> watched;
    bool takes = true; ///< otherwise requests are only counted
    std::function<void()> changed;

    Look operator()() {
        Look look;
        look.folder = currentFolder();
        // It is missing, or was removed or replaced: requests go to the folder that now has its name.
        if (!look.folder || look.folder != watched) watch(look);
        // Watched first, so that nothing that arrives meanwhile is missed.
        if (takes)
            look.drained = inbox.drain();
        else
            look.waiting = inbox.waiting();
        return look;
    }

    void watch(Look& look) {
        const auto folder = inbox.folder();
        if (!folder) return;
        const auto made = ports.files.createDirectories(*folder);
        look.folder = currentFolder();
        if (made && look.folder) look.watch = ports.events.watch(*folder, changed);
        if (!look.watch) ports.log.error("Could not watch for requests in {}", folder->string());
    }

    std::optional<FolderIdentity> currentFolder() const {
        const auto folder = inbox.folder();
        const auto info = folder ? ports.files.info(*folder) : FileResult<FileInfo>();
        // A link is not watched, because the inbox takes nothing through one.
        if (!folder || !info || info->kind != FileKind::directory) return std::nullopt;
        return FolderIdentity{info->device, info->inode};
    }
};

InboxWatcher::InboxWatcher(Ports ports, RequestInbox inbox, OnRequest onRequest)
    : ports_(ports), inbox_(std::move(inbox)), onRequest_(std::move(onRequest)) {}

void InboxWatcher::start() {
    isStarted_ = true;
    look();
}

void InboxWatcher::look() {
    if (!isStarted_) return;
    if (isLooking_) {
        looksAgain_ = true;
        return;
    }
    isLooking_ = true;
    const auto changed = [this, main = &ports_.main, alive = std::weak_ptr(alive_)] {
        main->post([this, alive] {
            if (!alive.expired()) look();
        });
    };
    inBackground(*this, alive_, ports_.queue, ports_.main,
                 FolderTask{ports_, inbox_, watched_, !isBusy_, changed},
                 [](InboxWatcher& self, Look look) { self.finish(std::move(look)); });
}

void InboxWatcher::finish(Look found) {
    isLooking_ = false;
    if (found.folder != watched_ || found.watch) {
        watched_ = found.folder;
        watch_ = std::move(found.watch);
    }
    const bool isMoreLeft = found.drained.waiting > 0 && found.drained.taken > 0;
    if (!found.drained.isEmpty()) held_.push_back(std::move(found.drained));
    waiting.set(found.waiting + (isBusy_ ? held_.size() : 0));
    if (std::exchange(looksAgain_, false) || isMoreLeft) look();
    serveHeld();
}

void InboxWatcher::serveHeld() {
    // The receiver may be busy with it or destroy this object.
    const auto alive = std::weak_ptr(alive_);
    while (!alive.expired() && !isBusy_ && !held_.empty()) {
        const auto drained = std::move(held_.front());
        held_.erase(held_.begin());
        onRequest_(drained);
    }
}

void InboxWatcher::follow(Property<bool>& takesRequests) {
    setBusy(!takesRequests.get());
    following_ = takesRequests.observe([this](bool takes) { setBusy(!takes); });
}

void InboxWatcher::setBusy(bool isBusy) {
    if (std::exchange(isBusy_, isBusy) == isBusy) return;
    look();
    serveHeld();
}

} // namespace tidwen

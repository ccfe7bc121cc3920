#include "system/inbox_watcher.h"

namespace tidwen {

InboxWatcher::InboxWatcher(Ports ports, RequestInbox& inbox, OnRequest onRequest)
    : ports_(ports), inbox_(inbox), onRequest_(std::move(onRequest)) {}

void InboxWatcher::start() {
    watch();
    serve();
}

void InboxWatcher::serve() {
    if (const auto paths = inbox_.drain(); !paths.empty()) onRequest_(paths);
    if (!watch_ || currentFolder() == watched_) return;
    watch(); // the folder was removed or replaced; requests go to the one that has its name
    if (const auto paths = inbox_.drain(); !paths.empty()) onRequest_(paths);
}

void InboxWatcher::watch() {
    watch_.reset();
    const auto folder = inbox_.folder();
    if (!folder) return;
    const auto made = ports_.files.createDirectories(*folder);
    watched_ = currentFolder();
    if (made && watched_)
        watch_ = ports_.events.watch(*folder, [this, main = &ports_.main, alive = std::weak_ptr(alive_)] {
            main->post([this, alive] {
                if (!alive.expired()) serve();
            });
        });
    if (!watch_) ports_.log.error("Could not watch for requests in {}", folder->string());
}

std::optional<InboxWatcher::FolderIdentity> InboxWatcher::currentFolder() const {
    const auto folder = inbox_.folder();
    const auto info = folder ? ports_.files.info(*folder) : FileResult<FileInfo>();
    // A link is not watched: the inbox takes nothing through one.
    if (!folder || !info || info->kind != FileKind::directory) return std::nullopt;
    return FolderIdentity{info->device, info->inode};
}

} // namespace tidwen

#include "macos/fs_events.h"

#include "base/path.h"
#include "macos/core_foundation.h"

#include <CoreServices/CoreServices.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace tidwen {

namespace {

namespace fs = std::filesystem;

/// Changes that come within this time are told as one.
constexpr CFTimeInterval gathering = 1.0; // seconds

/// Events name a folder in which something changed, or a file where files are asked for. These say that some
/// may be missing, or that the watched place itself came, went or was renamed.
constexpr FSEventStreamEventFlags concernsAll =
    kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagRootChanged;

class StreamWatch : public FolderEvents::Watch {
  public:
    using Matters = std::function<bool(std::string_view place)>;

    StreamWatch(Matters matters, std::function<void()> changed)
        : matters_(std::move(matters)),
          changed_(std::move(changed)),
          queue_(dispatch_queue_create("com.corvella.tidwen.folder-events", nullptr)) {}

    ~StreamWatch() override {
        if (stream_) {
            if (isStarted_) FSEventStreamStop(stream_); // forbidden for one that never started
            FSEventStreamInvalidate(stream_);
            FSEventStreamRelease(stream_);
        }
        dispatch_sync_f(queue_, nullptr, [](void*) {}); // waits for a running callback
        dispatch_release(queue_);
    }

    bool start(const std::string& folder, FSEventStreamCreateFlags flags) {
        const auto path = makeString(folder);
        if (!path) return false;
        const void* paths[] = {path.get()};
        const CFOwned list(CFArrayCreate(nullptr, paths, 1, &kCFTypeArrayCallBacks));
        FSEventStreamContext context{0, this, nullptr, nullptr, nullptr};
        // The first change after a quiet time is told at once.
        flags |= kFSEventStreamCreateFlagWatchRoot | kFSEventStreamCreateFlagNoDefer;
        stream_ = FSEventStreamCreate(nullptr, &StreamWatch::deliver, &context, list.get(),
                                      kFSEventStreamEventIdSinceNow, gathering, flags);
        if (!stream_) return false;
        FSEventStreamSetDispatchQueue(stream_, queue_);
        return isStarted_ = FSEventStreamStart(stream_);
    }

  private:
    static void deliver(ConstFSEventStreamRef, void* self, std::size_t count, void* paths,
                        const FSEventStreamEventFlags* flags, const FSEventStreamEventId*) {
        auto& watch = *static_cast<StreamWatch*>(self);
        const auto* const* places = static_cast<const char* const*>(paths);
        for (std::size_t i = 0; i < count; ++i) {
            std::string_view place = places[i];
            while (place.size() > 1 && place.ends_with('/'))
                place.remove_suffix(1);
            if ((flags[i] & concernsAll) != 0 || watch.matters_(place)) return watch.changed_();
        }
    }

    Matters matters_;
    std::function<void()> changed_;
    dispatch_queue_t queue_;
    FSEventStreamRef stream_ = nullptr;
    bool isStarted_ = false;
};

std::unique_ptr<FolderEvents::Watch> started(const fs::path& folder, FSEventStreamCreateFlags flags,
                                             StreamWatch::Matters matters, std::function<void()> changed) {
    auto watch = std::make_unique<StreamWatch>(std::move(matters), std::move(changed));
    if (!watch->start(folder.string(), flags)) return nullptr;
    return watch;
}

} // namespace

std::unique_ptr<FolderEvents::Watch> FsEvents::watch(const Path& folder, std::function<void()> changed) {
    // A link of the volume that leads outside is watched at its target; this reveals only that something
    // changed.
    std::error_code failure;
    const auto place = fs::weakly_canonical(root_ / folder.string().substr(1), failure);
    if (failure) return nullptr;
    // A stream tells of everything below, so the nearest folder that is there tells of one that comes.
    auto top = place;
    while (!fs::exists(top, failure) && top.has_relative_path())
        top = top.parent_path();
    if (!fs::is_directory(top, failure)) return nullptr;
    const auto matters = [wanted = place.string(), shortest = top.string().size()](std::string_view changes) {
        return changes == wanted
               || (changes.size() >= shortest && wanted.starts_with(std::string(changes) + "/"));
    };
    return started(top, 0, matters, std::move(changed));
}

std::unique_ptr<FolderEvents::Watch> FsEvents::watchFile(const Path& file, std::function<void()> changed) {
    std::error_code failure;
    const auto place = fs::weakly_canonical(root_ / file.string().substr(1), failure);
    if (failure) return nullptr;
    const auto matters = [wanted = place.string()](std::string_view changes) { return changes == wanted; };
    return started(place.parent_path(), kFSEventStreamCreateFlagFileEvents, matters, std::move(changed));
}

} // namespace tidwen

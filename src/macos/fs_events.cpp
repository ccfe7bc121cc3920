#include "macos/fs_events.h"

#include "macos/core_foundation.h"

#include <CoreServices/CoreServices.h>

#include <string>
#include <string_view>
#include <system_error>

namespace tidwen {

namespace {

/// Changes within this interval are reported together.
constexpr CFTimeInterval gathering = 0.5; // seconds

/// Events name a folder in which something changed. These flags mean that some may be missing, or that the
/// folder itself appeared, disappeared or was renamed.
constexpr FSEventStreamEventFlags concernsAll =
    kFSEventStreamEventFlagMustScanSubDirs | kFSEventStreamEventFlagRootChanged;

class StreamWatch : public FolderEvents::Watch {
  public:
    StreamWatch(std::string folder, std::function<void()> changed)
        : folder_(std::move(folder)),
          changed_(std::move(changed)),
          queue_(dispatch_queue_create("com.corvella.tidwen.folder-events", nullptr)) {}

    ~StreamWatch() override {
        if (stream_) {
            FSEventStreamStop(stream_);
            FSEventStreamInvalidate(stream_);
            FSEventStreamRelease(stream_);
        }
        dispatch_sync_f(queue_, nullptr, [](void*) {}); // waits for a running callback
        dispatch_release(queue_);
    }

    bool start() {
        const auto path = makeString(folder_);
        if (!path) return false;
        const void* paths[] = {path.get()};
        const CFOwned list(CFArrayCreate(nullptr, paths, 1, &kCFTypeArrayCallBacks));
        FSEventStreamContext context{0, this, nullptr, nullptr, nullptr};
        stream_ =
            FSEventStreamCreate(nullptr, &StreamWatch::tell, &context, list.get(),
                                kFSEventStreamEventIdSinceNow, gathering, kFSEventStreamCreateFlagWatchRoot);
        if (!stream_) return false;
        FSEventStreamSetDispatchQueue(stream_, queue_);
        return FSEventStreamStart(stream_);
    }

  private:
    static void tell(ConstFSEventStreamRef, void* self, std::size_t count, void* paths,
                     const FSEventStreamEventFlags* flags, const FSEventStreamEventId*) {
        auto& watch = *static_cast<StreamWatch*>(self);
        const auto* const* folders = static_cast<const char* const*>(paths);
        for (std::size_t i = 0; i < count; ++i)
            if ((flags[i] & concernsAll) != 0 || watch.isWatched(folders[i])) return watch.changed_();
    }

    /// Streams also report changes anywhere below.
    bool isWatched(std::string_view folder) const {
        while (folder.size() > 1 && folder.ends_with('/'))
            folder.remove_suffix(1);
        return folder == folder_;
    }

    std::string folder_; ///< resolved, as in events
    std::function<void()> changed_;
    dispatch_queue_t queue_;
    FSEventStreamRef stream_ = nullptr;
};

} // namespace

std::unique_ptr<FolderEvents::Watch> FsEvents::watch(const Path& folder, std::function<void()> changed) {
    // A link of the volume that leads outside is watched at its target; this reveals only that something
    // changed.
    std::error_code failure;
    const auto place = std::filesystem::weakly_canonical(root_ / folder.string().substr(1), failure);
    if (failure) return nullptr;
    auto watch = std::make_unique<StreamWatch>(place.string(), std::move(changed));
    if (!watch->start()) return nullptr;
    return watch;
}

} // namespace tidwen

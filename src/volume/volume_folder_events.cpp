#include "volume/volume_folder_events.h"

#include "base/descriptor.h"
#include "base/path.h"
#include "platform/file_system.h"
#include "posix/root_resolver.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <tl/expected.hpp>

#ifdef __linux__
#include <array>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <thread>
#endif

namespace tidwen {

VolumeFolderEvents::VolumeFolderEvents(const std::filesystem::path& root) {
    Descriptor folder(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) return;
    const auto way =
        RootResolver::kernelResolves(folder.get()) ? RootResolver::Way::kernel : RootResolver::Way::walk;
    resolver_ = std::make_shared<const RootResolver>(std::move(folder), way);
}

VolumeFolderEvents::~VolumeFolderEvents() = default;

#ifdef __linux__
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// Copying into the folder causes a burst of events: reported when it pauses, after a second at the latest.
constexpr milliseconds quietTime{100};
constexpr milliseconds longestGathering{1000};

constexpr std::uint32_t nameEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR;
constexpr std::uint32_t lossEvents = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT | IN_Q_OVERFLOW;

/// What is watched: the folder if it exists, and its nearest existing ancestor, which reports when the folder
/// appears, disappears or is replaced.
struct Places {
    Descriptor events;
    int folder = -1;     ///< watch of the folder; -1 when it does not exist
    int above = -1;      ///< watch of the ancestor; -1 when it cannot be watched
    std::string awaited; ///< the name to watch for in the ancestor
};

/// By the open folder, not by its path: exactly what was resolved inside the root is watched.
int addWatch(const Descriptor& events, const Descriptor& folder, std::uint32_t mask) {
    const auto place = "/proc/self/fd/" + std::to_string(folder.get());
    return ::inotify_add_watch(events.get(), place.c_str(), mask | IN_DELETE_SELF | IN_MOVE_SELF);
}

FileResult<Descriptor> openFolder(const RootResolver& resolver, const Path& folder) {
    return resolver.open(folder, O_RDONLY | O_DIRECTORY, LastLink::follow);
}

/// Adds the watch of the nearest ancestor. False when the awaited item appeared meanwhile.
bool watchAbove(const RootResolver& resolver, const Path& folder, Places& places) {
    auto awaited = folder, above = folder.parent();
    auto opened = openFolder(resolver, above);
    while (!opened && !above.isRoot()) {
        awaited = above;
        above = above.parent();
        opened = openFolder(resolver, above);
    }
    places.awaited = awaited.lastComponent();
    if (opened) places.above = addWatch(places.events, *opened, nameEvents);
    return awaited == folder || !openFolder(resolver, awaited);
}

/// The ancestor is watched before the folder is looked up, so that nothing in between is missed.
FileResult<Places> findPlaces(const RootResolver& resolver, const Path& folder) {
    constexpr int attempts = 8; // gives up on folders that keep appearing and disappearing
    const auto failed = [&](FileFault fault) { return tl::unexpected(FileError{fault, folder, errno}); };
    Places places;
    places.events = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!places.events.isOpen()) return failed(FileFault::io);
    for (int attempt = 0; attempt < attempts && !watchAbove(resolver, folder, places); ++attempt) {
    }
    const auto found = openFolder(resolver, folder);
    if (!found && places.above < 0) return failed(found.error().fault);
    if (!found) return places;
    places.folder = addWatch(places.events, *found, nameEvents | IN_CLOSE_WRITE);
    if (places.folder < 0) return failed(FileFault::io);
    return places;
}

class InotifyWatch : public FolderEvents::Watch {
  public:
    InotifyWatch(std::shared_ptr<const RootResolver> resolver, Path folder, Places places, Descriptor wakeUp,
                 std::function<void()> changed)
        : resolver_(std::move(resolver)),
          folder_(std::move(folder)),
          places_(std::move(places)),
          wakeUp_(std::move(wakeUp)),
          changed_(std::move(changed)),
          thread_([this] { run(); }) {}

    ~InotifyWatch() override {
        const std::uint64_t one = 1;
        (void)retryOnEintr([&] { return ::write(wakeUp_.get(), &one, sizeof one); });
        thread_.join();
    }

  private:
    enum class Awaited { event, nothing, end };

    Awaited await(milliseconds longest) {
        std::array<pollfd, 2> sources = {pollfd{places_.events.get(), POLLIN, 0},
                                         pollfd{wakeUp_.get(), POLLIN, 0}};
        const int ready = retryOnEintr(
            [&] { return ::poll(sources.data(), sources.size(), static_cast<int>(longest.count())); });
        if (ready < 0 || sources[1].revents != 0) return Awaited::end;
        if (ready == 0) return Awaited::nothing;
        return takeEvents() ? Awaited::event : Awaited::nothing;
    }

    /// True when one of the events concerns the folder.
    bool takeEvents() {
        bool matters = false;
        alignas(inotify_event) std::array<char, 16384> buffer;
        for (ssize_t got = 0; (got = ::read(places_.events.get(), buffer.data(), buffer.size())) > 0;)
            for (ssize_t at = 0; at < got;) {
                inotify_event event{};
                std::memcpy(&event, buffer.data() + at, sizeof event);
                const char* name = buffer.data() + at + sizeof event;
                const bool isOtherItem = event.wd == places_.above && event.wd != places_.folder
                                         && (event.mask & lossEvents) == 0
                                         && (event.len == 0 || places_.awaited != name);
                if (!isOtherItem) matters = true;
                if (!isOtherItem && (event.wd != places_.folder || (event.mask & lossEvents) != 0))
                    isMoved_ = true;
                at += static_cast<ssize_t>(sizeof event + event.len);
            }
        return matters;
    }

    /// The folder may have been replaced. If nothing can be watched any more, no further calls follow.
    void follow() {
        isMoved_ = false;
        if (auto places = findPlaces(*resolver_, folder_)) places_ = std::move(*places);
    }

    void run() {
        for (;;) {
            auto next = await(milliseconds(-1));
            if (next == Awaited::end) return;
            if (next == Awaited::nothing) continue; // something else in the same folder
            const auto end = Clock::now() + longestGathering;
            while (next == Awaited::event && Clock::now() < end)
                next = await(quietTime);
            if (next == Awaited::end) return;
            if (isMoved_) follow();
            changed_();
        }
    }

    std::shared_ptr<const RootResolver> resolver_;
    Path folder_;
    Places places_;
    bool isMoved_ = false;
    Descriptor wakeUp_;
    std::function<void()> changed_;
    std::thread thread_;
};

} // namespace

std::unique_ptr<FolderEvents::Watch> VolumeFolderEvents::watch(const Path& folder,
                                                               std::function<void()> changed) {
    if (!resolver_ || !RootResolver::canName(folder)) return nullptr;
    const auto now = openFolder(*resolver_, folder);
    if (!now && now.error().fault != FileFault::missing) return nullptr; // for example, a file has its name
    auto places = findPlaces(*resolver_, folder);
    Descriptor wakeUp(::eventfd(0, EFD_CLOEXEC));
    if (!places || !wakeUp.isOpen()) return nullptr;
    return std::make_unique<InotifyWatch>(resolver_, folder, std::move(*places), std::move(wakeUp),
                                          std::move(changed));
}
#else
std::unique_ptr<FolderEvents::Watch> VolumeFolderEvents::watch(const Path&, std::function<void()>) {
    return nullptr;
}
#endif

} // namespace tidwen

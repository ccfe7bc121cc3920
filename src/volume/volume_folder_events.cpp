#include "volume/volume_folder_events.h"

#include "volume/root_resolver.h"

#include <fcntl.h>

#ifdef __linux__
#include <array>
#include <chrono>
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
    resolver_ = std::make_unique<RootResolver>(std::move(folder), way);
}

VolumeFolderEvents::~VolumeFolderEvents() = default;

#ifdef __linux__
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// A copy into the folder comes as a burst of events: told once it pauses, and at the latest after a second.
constexpr milliseconds quietTime{100};
constexpr milliseconds longestGathering{1000};

constexpr std::uint32_t interestingEvents =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ONLYDIR;

class InotifyWatch : public FolderEvents::Watch {
  public:
    InotifyWatch(Descriptor events, Descriptor wakeUp, std::function<void()> changed)
        : events_(std::move(events)),
          wakeUp_(std::move(wakeUp)),
          changed_(std::move(changed)),
          thread_([this] { run(); }) {}

    ~InotifyWatch() override {
        const std::uint64_t one = 1;
        (void)uninterrupted([&] { return ::write(wakeUp_.get(), &one, sizeof one); });
        thread_.join();
    }

  private:
    enum class Awaited { event, nothing, end };

    Awaited await(milliseconds longest) {
        std::array<pollfd, 2> sources = {pollfd{events_.get(), POLLIN, 0}, pollfd{wakeUp_.get(), POLLIN, 0}};
        const int ready = uninterrupted(
            [&] { return ::poll(sources.data(), sources.size(), static_cast<int>(longest.count())); });
        if (ready < 0 || sources[1].revents != 0) return Awaited::end;
        if (ready == 0) return Awaited::nothing;
        std::array<char, 16 * 1024> buffer; // what the events say is for the listener to find out
        while (::read(events_.get(), buffer.data(), buffer.size()) > 0) {
        }
        return Awaited::event;
    }

    void run() {
        for (;;) {
            if (await(milliseconds(-1)) != Awaited::event) return;
            const auto end = Clock::now() + longestGathering;
            auto next = Awaited::event;
            while (next == Awaited::event && Clock::now() < end)
                next = await(quietTime);
            if (next == Awaited::end) return;
            changed_();
        }
    }

    Descriptor events_;
    Descriptor wakeUp_;
    std::function<void()> changed_;
    std::thread thread_;
};

} // namespace

std::unique_ptr<FolderEvents::Watch> VolumeFolderEvents::watch(const Path& folder,
                                                               std::function<void()> changed) {
    const auto opened =
        resolver_ ? resolver_->open(folder, O_RDONLY | O_DIRECTORY, LastLink::follow)
                  : FileResult<Descriptor>(tl::unexpected(FileError{FileFault::missing, folder, 0}));
    if (!opened) return nullptr;
    Descriptor events(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    Descriptor wakeUp(::eventfd(0, EFD_CLOEXEC));
    if (!events.isOpen() || !wakeUp.isOpen()) return nullptr;
    // By the open folder, not by its path: what was resolved inside the root is what is watched.
    const auto place = "/proc/self/fd/" + std::to_string(opened->get());
    if (::inotify_add_watch(events.get(), place.c_str(), interestingEvents) < 0) return nullptr;
    return std::make_unique<InotifyWatch>(std::move(events), std::move(wakeUp), std::move(changed));
}
#else
std::unique_ptr<FolderEvents::Watch> VolumeFolderEvents::watch(const Path&, std::function<void()>) {
    return nullptr;
}
#endif

} // namespace tidwen

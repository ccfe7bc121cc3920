#pragma once

#include "base/log.h"
#include "base/property_list.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The application group that Tidwen's processes share when its bundle names none.
inline constexpr std::string_view tidwenApplicationGroup = "C7RVL2A9TD.com.corvella.tidwen";

/// The bundle that this process runs from, as far as it names the inbox.
struct OwnBundle {
    bool isExtension = false; ///< the bundle's name ends with ".appex"
    std::string group{tidwenApplicationGroup};
    friend bool operator==(const OwnBundle&, const OwnBundle&) = default;
};

/// Reads the group from the bundle's Info dictionary ("CorvellaAppGroup"): a name that can stand for a
/// folder.
OwnBundle ownBundle(std::string_view bundlePath, const PropertyListDictionary& info);

/// Asks the running Tidwen to remove applications: what the Finder extension and the Services menu hand over
/// (docs/file-formats.md, "Uninstall request").
struct UninstallRequest {
    std::vector<std::string> paths; ///< absolute paths of application bundles
    friend bool operator==(const UninstallRequest&, const UninstallRequest&) = default;
};

/// Nothing when the text is no such request.
std::optional<UninstallRequest> decodeRequest(std::string_view json);
std::string encode(const UninstallRequest& request);

/// The folder through which other processes of the user hand bundles to the running one. Anybody with the
/// user's rights can write there, so a request only names what intake will judge, and everything is bounded.
/// Calls block; any thread.
class RequestInbox {
  public:
    // More than a person selects in the Finder; what exceeds it is no request of ours.
    static constexpr std::size_t maxRequestBytes = 1u << 20;
    static constexpr std::size_t maxPathsPerRequest = 1000;
    // What is beyond these waits for the next drain.
    static constexpr std::size_t maxRequestsPerDrain = 200;
    static constexpr std::size_t maxPathsPerDrain = 1000;
    static constexpr std::size_t maxBytesPerDrain = 8u << 20;

    /// `container`: the shared folder of the application group; nothing when this process has none.
    RequestInbox(FileSystem& files, std::optional<Path> container, Log& log)
        : files_(files), container_(std::move(container)), log_(log) {}

    /// "<home>/Library/Group Containers/<group>", where the system gives no container; an extension, which
    /// may not go there by itself, then has none.
    static std::optional<Path> fallbackContainer(const UserEnvironment& user, const OwnBundle& bundle = {});

    /// The folder to watch for new requests; nothing without a container.
    std::optional<Path> folder() const;

    /// False when there is no container, it could not be written, or a drain would refuse the request: too
    /// many paths, or one that is not valid UTF-8. `fileName` is one component, without extension.
    bool post(const UninstallRequest& request, const std::string& fileName);

    /// What was taken out of the folder.
    struct Drained {
        std::vector<Path> paths;          ///< absolute, without "..", no links, and there; each once
        std::vector<std::string> refused; ///< the other paths that were asked for, as they were written
        std::size_t unreadable = 0;       ///< files that held no request, or could not be taken away
        std::size_t taken = 0;            ///< files that are gone now
        std::size_t waiting = 0;          ///< requests that are beyond the limits, for the next drain

        bool isEmpty() const { return paths.empty() && refused.empty() && unreadable == 0; }
    };
    /// Takes the waiting requests, in the order of their names and within the limits, and removes their
    /// files, whether or not they could be read; pipes, devices and folders are left alone. A `folder` that
    /// is a link holds no requests.
    Drained drain();
    /// How many requests wait, none of them looked at.
    std::size_t waiting() const;

    /// The file that tells the Finder extension whether to offer its menu entry. False when it
    /// could not be written or removed.
    bool setFinderGate(bool enabled);

  private:
    struct Taken;
    struct Listing {
        std::vector<Path> requests = {};
        std::vector<Path> unfinished = {}; ///< not posted yet: still being written, or never finished
    };
    Listing list() const;
    void take(const Path& file, Taken& taken);
    void judge(const UninstallRequest& request, Drained& drained) const;
    std::optional<std::string> readRequest(const Path& file) const;
    bool isAcceptable(const std::string& path) const;

    FileSystem& files_;
    std::optional<Path> container_;
    Log& log_;
};

} // namespace tidwen

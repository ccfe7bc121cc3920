#pragma once

#include "base/log.h"
#include "base/message.h"
#include "base/path.h"
#include "base/property_list.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The application group shared by Tidwen's processes when the bundle names none.
inline constexpr std::string_view tidwenApplicationGroup = "C7RVL2A9TD.com.corvella.tidwen";

/// What determines the inbox in the bundle that this process runs from.
struct OwnBundle {
    bool isExtension = false; ///< the bundle's name ends with ".appex"
    std::string group{tidwenApplicationGroup};
    friend bool operator==(const OwnBundle&, const OwnBundle&) = default;
};

/// Reads the group from the bundle's Info dictionary ("CorvellaAppGroup"); it must be usable as a folder
/// name.
OwnBundle ownBundle(std::string_view bundlePath, const PropertyListDictionary& info);

/// A request to the running Tidwen to remove applications, as posted by the Finder extension and the Services
/// menu (docs/file-formats.md, "Uninstall request").
struct UninstallRequest {
    std::vector<std::string> paths; ///< absolute paths of application bundles
    friend bool operator==(const UninstallRequest&, const UninstallRequest&) = default;
};

/// nullopt when the text is not such a request.
std::optional<UninstallRequest> decodeRequest(std::string_view json);
std::string encode(const UninstallRequest& request);

/// The folder through which other processes of the user pass bundles to the running Tidwen. Any process with
/// the user's rights can write there, so a request only names paths that intake will check, and everything is
/// bounded. Calls block; any thread.
class RequestInbox {
  public:
    // More than anyone selects in the Finder; a larger file is not a request.
    static constexpr std::size_t maxRequestBytes = 1u << 20;
    static constexpr std::size_t maxPathsPerRequest = 1000;
    // Requests beyond these limits wait for the next drain.
    static constexpr std::size_t maxRequestsPerDrain = 200;
    static constexpr std::size_t maxPathsPerDrain = 1000;
    static constexpr std::size_t maxBytesPerDrain = 8u << 20;

    /// `container`: the shared folder of the application group; nullopt when this process has none.
    RequestInbox(FileSystem& files, std::optional<Path> container, Log& log)
        : files_(files), container_(std::move(container)), log_(log) {}

    /// "<home>/Library/Group Containers/<group>", for when the system returns no container; nullopt for an
    /// extension, which may not go there by itself.
    static std::optional<Path> fallbackContainer(const UserEnvironment& user, const OwnBundle& bundle = {});

    /// The folder to watch for new requests; nullopt without a container.
    std::optional<Path> folder() const;

    /// False when there is no container, it could not be written, or a drain would refuse the request: too
    /// many paths, or one that is not valid UTF-8. `fileName` is one component, without extension.
    bool post(const UninstallRequest& request, const std::string& fileName);

    /// The requests taken out of the folder.
    struct Drained {
        std::vector<Path> paths;          ///< absolute, without "..", no links, existing; without duplicates
        std::vector<std::string> refused; ///< the other requested paths, as written
        std::size_t unreadable = 0;       ///< files that were not requests, or could not be removed
        std::size_t taken = 0;            ///< files removed
        std::size_t waiting = 0;          ///< requests beyond the limits, for the next drain
        bool isClosed = false;            ///< the folder may hold requests, but could not be read

        bool isEmpty() const { return paths.empty() && refused.empty() && unreadable == 0; }
        /// What was asked for and cannot be served.
        std::vector<Message> refusals() const;
    };
    /// Takes the waiting requests in the order of their names, within the limits, and removes their files
    /// whether or not they could be read; pipes, devices and folders are left alone. A `folder` that is a
    /// link contains no requests.
    Drained drain();
    /// Number of waiting requests, without reading them.
    std::size_t waiting() const;

    /// The file that tells the Finder extension whether to show its menu item. False when it could not be
    /// written or removed.
    bool setFinderGate(bool enabled);
    /// That file is there.
    bool isFinderGateOpen() const;

  private:
    std::optional<Path> finderGate() const;
    struct Taken;
    struct Listing {
        std::vector<Path> requests = {};
        std::vector<Path> unfinished = {}; ///< not posted yet: still being written, or never finished
        bool isClosed = false;             ///< the folder could not be read
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

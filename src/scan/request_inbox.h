#pragma once

#include "base/log.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The application group that Tidwen's processes share when its bundle names none.
inline constexpr std::string_view tidwenApplicationGroup = "C7RVL2A9TD.com.corvella.tidwen";

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
class RequestInbox {
  public:
    // More than a person selects in the Finder; what exceeds it is not a request of ours.
    static constexpr std::size_t maxRequestBytes = 1u << 20;
    static constexpr std::size_t maxPathsPerDrain = 1000;
    static constexpr std::size_t maxRequestsPerDrain = 1000;

    /// `container`: the shared folder of the application group; nothing when this process has none.
    RequestInbox(FileSystem& files, std::optional<Path> container, Log& log)
        : files_(files), container_(std::move(container)), log_(log) {}

    /// "<home>/Library/Group Containers/<group>", where the system gives no container.
    static Path fallbackContainer(const UserEnvironment& user);

    /// The folder to watch for new requests; nothing without a container.
    std::optional<Path> folder() const;

    /// False when there is no container or it could not be written.
    bool post(const UninstallRequest& request, const std::string& fileName);

    /// Takes every waiting request and removes its file, whether or not it could be read. Gives the paths
    /// that are absolute, hold no "..", are no links and exist, each once.
    std::vector<Path> drain();

    /// The file that tells the Finder extension whether to offer its menu entry. Failures are ignored.
    void setFinderGate(bool enabled);

  private:
    void take(const Path& file, std::vector<Path>& paths);
    bool isAcceptable(const std::string& path) const;

    FileSystem& files_;
    std::optional<Path> container_;
    Log& log_;
};

} // namespace tidwen

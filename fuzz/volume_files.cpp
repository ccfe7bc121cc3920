// The property lists of macOS and applications that a scan reads, in their own places. The first byte selects
// the file.

#include "base/path.h"
#include "base/text.h"
#include "platform/file_code_signatures.h"
#include "platform/file_system.h"
#include "platform/property_list_file.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle.h"
#include "scan/applications/container_identity.h"
#include "scan/applications/installed_app.h"
#include "volume/volume_sources.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

using namespace tidwen;

constexpr const char* bundle = "/Applications/Marlin Notes.app";
constexpr const char* container = "/Users/alice/Library/Containers/com.example.marlin";

constexpr std::string_view files[] = {
    "/Applications/Marlin Notes.app/Contents/Info.plist",
    "/Applications/Marlin Notes.app/Contents/Library/LaunchAgents/job.plist",
    "/private/var/db/com.apple.xpc.launchd/disabled.501.plist",
    "/private/var/db/receipts/com.example.marlin.plist",
    "/Library/SystemExtensions/db.plist",
    "/Users/alice/Library/Containers/com.example.marlin/.com.apple.containermanagerd.metadata.plist",
};

/// One folder for the whole run; in memory where possible.
struct Volume {
    Volume() {
        const std::filesystem::path memory = "/dev/shm";
        std::string pattern =
            (std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path())
            / "tidwen-fuzz-XXXXXX";
        if (!::mkdtemp(pattern.data())) std::abort();
        root = pattern;
        for (const auto file : files)
            std::filesystem::create_directories(host(file).parent_path());
        disk = std::move(RootedFileSystem::open(root).value());
    }
    ~Volume() { std::filesystem::remove_all(root); }

    std::filesystem::path host(std::string_view file) const { return root / file.substr(1); }

    std::filesystem::path root;
    std::unique_ptr<RootedFileSystem> disk;
    UserEnvironment user = {.home = Path("/Users/alice"), .userID = 501};
};

void require(bool condition) {
    if (!condition) std::abort();
}

void readApplication(const FileSystem& disk) {
    const FileCodeSignatures signatures(disk);
    if (const auto target = AppTargetLoader(disk, signatures).load(Path(bundle))) {
        require(!target->bundleID.empty() && isValidUtf8(target->bundleID) && isValidUtf8(target->name));
        for (const auto& job : target->embeddedLaunchdItems)
            require(!job.label.empty());
    }
    makeInstalledApp(disk, signatures, Path(bundle));
    if (const auto opened = Bundle::open(disk, Path(bundle)))
        require(opened->executable().standardized().parent() == opened->contents / "MacOS");
    for (const auto& identifier : embeddedBundleIDs(disk, Path(bundle)))
        require(!identifier.empty());
}

void readSystem(Volume& volume) {
    for (const auto& [label, isOff] : VolumeLaunchd(*volume.disk, volume.user).disabledOverrides(false))
        require(isValidUtf8(label));
    const VolumeReceipts receipts(*volume.disk);
    for (const auto& packageID : receipts.packageIDs())
        if (const auto receipt = receipts.read(packageID)) require(!receipt->installBase.hasTraversal());
    for (const auto& extension : VolumeSystemExtensions(*volume.disk).list())
        require(!extension.bundleID.empty());
    if (const auto identity = containerIdentity(*volume.disk, Path(container))) require(!identity->empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Volume volume;
    if (size == 0) return 0;
    const auto file = volume.host(files[data[0] % std::size(files)]);
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(data + 1), static_cast<std::streamsize>(size - 1));
    readApplication(*volume.disk);
    readSystem(volume);
    std::filesystem::remove(file);
    return 0;
}

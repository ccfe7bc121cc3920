// Compares listing the installed applications, with everything the home grid shows except sizes, with just
// reading and parsing their Info.plists. Usage: inventory_bench VOLUME

#include "base/property_list.h"
#include "inventory/app_inventory.h"
#include "inventory/installed_applications.h"
#include "platform/file_code_signatures.h"
#include "posix/rooted_file_system.h"
#include "stopwatch.h"
#include "volume/volume_sources.h"
#include "volume/volume_user.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <unistd.h>

using namespace tidwen;

namespace {

/// In the simplest way.
bool readsInfo(const std::string& file) {
    char bytes[64 << 10];
    const int opened = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened < 0) return false;
    const auto count = ::read(opened, bytes, sizeof bytes);
    ::close(opened);
    return count > 0 && parsePropertyList({bytes, static_cast<std::size_t>(count)}).has_value();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: inventory_bench VOLUME\n"), 2;
    const auto root = std::filesystem::canonical(argv[1]).string();
    const auto files = RootedFileSystem::open(root);
    const auto user = files ? findVolumeUser(**files, std::nullopt) : tl::unexpected(VolumeUserError{});
    if (!user) return std::fprintf(stderr, "%s is no volume\n", argv[1]), 1;

    const FileCodeSignatures signatures(**files);
    VolumeRunningApplications running;
    const auto bundles = findApplicationBundles(**files, *user);
    std::size_t read = 0, listed = 0; // used, so that the compiler cannot drop the work
    const auto seconds = tidwen::bench::secondsOf(
        11, {[&] {
                 for (const auto& bundle : bundles)
                     read += readsInfo(root + bundle.string() + "/Contents/Info.plist");
             },
             [&] { listed += readIdentities(**files, findApplicationBundles(**files, *user)).size(); },
             [&] {
                 listed += AppInventory({**files, signatures, running}, *user).build().size();
             }});
    std::printf("%zu applications: their Info.plists %.1f ms, names and identifiers %.1f ms, list %.1f ms\n",
                bundles.size(), seconds[0] * 1e3, seconds[1] * 1e3, seconds[2] * 1e3);
    bool holds = read > 0 && listed > 0;
    holds &= tidwen::bench::printRatio("names and identifiers against Info.plists", seconds[1] / seconds[0],
                                       "<=", 2);
    holds &= tidwen::bench::printRatio("list against Info.plists", seconds[2] / seconds[0], "<=", 20);
    return holds ? 0 : 1;
}

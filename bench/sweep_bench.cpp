// Compares `tidwen orphans` on a volume with `find` over the places that it searches, the least work for a
// complete search. Usage: sweep_bench VOLUME TIDWEN, or sweep_bench --many VOLUME TIDWEN for a volume of
// 200,000 leftovers, which is measured without comparison.

#include "base/path.h"
#include "command.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "scan/policy/search_location.h"
#include "stopwatch.h"
#include "volume/volume_user.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

using namespace tidwen;
using tidwen::bench::Command;
using tidwen::bench::run;

namespace {

/// The existing locations that are not inside another one.
std::vector<Path> topLocations(const FileSystem& files, const UserEnvironment& user) {
    std::vector<Path> all, top;
    for (const auto& location : searchLocations(user))
        if (files.isDirectoryFollowingLinks(location.url)) all.push_back(location.url);
    std::copy_if(all.begin(), all.end(), std::back_inserter(top), [&](const Path& path) {
        return std::none_of(all.begin(), all.end(),
                            [&](const Path& other) { return path != other && path.isWithin(other); });
    });
    return top;
}

/// Neither the search nor the document may need more memory than a small Mac has to spare.
int measureMany(const std::string& root, const char* tidwen) {
    const Command orphans = {tidwen, "--volume", root, "orphans", "--json"};
    const auto seconds = tidwen::bench::secondsOf(3, {[&] { run(orphans, 2); }});
    bool holds = tidwen::bench::printRatio("seconds for 200,000 leftovers", seconds[0], "<=", 4);
    const double memory = static_cast<double>(run(orphans, 2)) / 1024;
    holds &= tidwen::bench::printRatio("peak memory, MiB", memory, "<=", 256);
    return holds ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::string_view(argv[1]) == "--many")
        return measureMany(std::filesystem::canonical(argv[2]).string(), argv[3]);
    if (argc != 3) return std::fprintf(stderr, "usage: sweep_bench VOLUME TIDWEN\n"), 2;
    const auto root = std::filesystem::canonical(argv[1]).string();
    const auto files = RootedFileSystem::open(root);
    const auto user = files ? findVolumeUser(**files, std::nullopt) : tl::unexpected(VolumeUserError{});
    if (!user) return std::fprintf(stderr, "%s is no volume\n", argv[1]), 1;

    Command find = {"find"};
    for (const auto& location : topLocations(**files, *user))
        find.push_back(root + location.string());
    const Command orphans = {argv[2], "--volume", root, "orphans", "--json"};
    bool holds = true;
    for (const int cores : {1, 2}) {
        const auto seconds =
            tidwen::bench::secondsOf(11, {[&] { run(find, cores); }, [&] { run(orphans, cores); }});
        std::printf("%d core%s: find %.1f ms, tidwen orphans %.1f ms\n", cores, cores > 1 ? "s" : "",
                    seconds[0] * 1e3, seconds[1] * 1e3);
        holds &= tidwen::bench::printRatio("orphans against find", seconds[1] / seconds[0], "<=", 2);
    }
    const double memory = static_cast<double>(run(orphans, 2)) / 1024;
    holds &= tidwen::bench::printRatio("peak memory, MiB", memory, "<=", 64);
    return holds ? 0 : 1;
}

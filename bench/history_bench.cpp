// Compares reading the history of 5,000 runs with reading the same manifests once without further work.
// Usage: history_bench FOLDER; writes the volume there unless the folder exists, and keeps it.

#include "base/path.h"
#include "base/timestamp.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "quarantine/history.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"
#include "stopwatch.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <unistd.h>
#include <vector>

using namespace tidwen;
namespace fs = std::filesystem;

namespace {

constexpr int runs = 5000;
constexpr int itemsPerRun = 12; // an average application's number of leftovers

const UserEnvironment alice{Path("/Users/alice"), ::geteuid(), {}, {}};

/// A run whose items are still in quarantine, as is usual before a purge.
Manifest makeRun(int number) {
    const Timestamp date = *parseIso8601("2026-01-01T00:00:00Z") + std::chrono::seconds(number);
    const std::string name = fmt::format("Marlin {}", number);
    Manifest run{.createdAt = date,
                 .quarantineRoot = makeLayout({{name, "com.example.marlin"}}, date, alice).root,
                 .apps = {{name, "com.example.marlin"}}};
    for (int i = 1; i <= itemsPerRun; ++i) {
        const std::string item = fmt::format("com.example.marlin{}.part{}", number, i);
        run.entries.push_back({.operationID = i,
                               .source = "/Users/alice/Library/Caches/" + item,
                               .destination = (run.quarantineRoot / fmt::format("{:04}", i) / item).string(),
                               .bundleID = "com.example.marlin"});
    }
    return run;
}

/// The paths of the manifests on this machine.
std::vector<std::string> writeVolume(const fs::path& root) {
    const auto host = [&](const std::string& macPath) { return root / macPath.substr(1); };
    const bool isWritten = fs::exists(root);
    std::vector<std::string> manifests;
    for (int i = 0; i < runs; ++i) {
        const auto run = makeRun(i);
        manifests.push_back(host((run.quarantineRoot / manifestFileName).string()).string());
        if (isWritten) continue;
        for (const auto& entry : run.entries)
            fs::create_directories(host(*entry.destination));
        std::ofstream(manifests.back()) << encode(run);
    }
    return manifests;
}

std::string readPlainly(const std::string& path) {
    std::string content;
    char buffer[64 << 10];
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    for (ssize_t count = 0; (count = ::read(file, buffer, sizeof buffer)) > 0;)
        content.append(buffer, static_cast<std::size_t>(count));
    ::close(file);
    return content;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: history_bench FOLDER\n"), 2;
    const auto manifests = writeVolume(argv[1]);
    const auto files = RootedFileSystem::open(argv[1]);
    if (!files || loadHistory(alice, **files, false).size() != runs) return 1;

    std::vector<std::string> contents;
    std::size_t bytes = 0, parsed = 0;
    const auto decodeAll = [&] {
        for (const auto& manifest : manifests)
            if (!decodeManifest(readPlainly(manifest))) std::exit(1);
    };
    const auto parseAll = [&] {
        for (const auto& content : contents)
            parsed += nlohmann::json::parse(content).size();
    };
    const auto decodeKept = [&] {
        for (const auto& content : contents)
            parsed += decodeManifest(content)->entries.size();
    };
    for (const auto& manifest : manifests)
        bytes += contents.emplace_back(readPlainly(manifest)).size();
    const auto seconds =
        tidwen::bench::secondsOf(11, {decodeAll, [&] { loadHistory(alice, **files, false); }, parseAll,
                                      decodeKept, [&] { loadHistory(alice, **files, true); }});
    std::printf("%d runs of %d items, %.1f MB of manifests\n", runs, itemsPerRun,
                static_cast<double>(bytes) / 1e6);
    std::printf("read and decoded %.1f ms, history %.1f ms, with sizes %.1f ms\n", seconds[0] * 1e3,
                seconds[1] * 1e3, seconds[4] * 1e3);
    std::printf("decoded alone %.1f ms, trees of the JSON library %.1f ms\n", seconds[3] * 1e3,
                seconds[2] * 1e3);
    bool holds = tidwen::bench::printRatio("history against reading and decoding the same files",
                                           seconds[1] / seconds[0], "<=", 1.3);
    holds &= tidwen::bench::printRatio("decoding, times faster than the library's trees",
                                       seconds[2] / seconds[3], ">=", 1.5);
    return holds && parsed != 0 ? 0 : 1;
}

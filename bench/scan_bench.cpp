// Compares `tidwen scan` on a volume with the least work the system's own tools need for the answer: `du`
// over the folders found, and a listing of the places searched. Usage: scan_bench VOLUME TIDWEN APPLICATION…;
// each a Mac path, the first one is compared with the targets.

#include "base/log.h"
#include "base/path.h"
#include "base/texts.h"
#include "command.h"
#include "platform/file_code_signatures.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/policy/search_location.h"
#include "stopwatch.h"
#include "volume/volume_sources.h"
#include "volume/volume_user.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using namespace tidwen;
using tidwen::bench::Command;
using tidwen::bench::run;

namespace {

struct QuietLog : Log {
    void write(LogLevel, std::string_view) override {}
};

class ScanBench {
  public:
    ScanBench(std::string root, std::string program)
        : root_(std::move(root)), program_(std::move(program)), files_(opened(root_)) {
        auto user = findVolumeUser(*files_, std::nullopt);
        if (!user) std::exit(1);
        user_ = *user;
    }

    /// Compared with the targets if `isMeasured`; otherwise only printed.
    bool compare(const std::string& application, bool isMeasured) {
        Command du = {"du", "-s", "--"};
        Command list = {"ls", "-f", "--"};
        for (const auto& trace : scan(application).traces)
            if (const auto* path = movedPath(trace.action)) du.push_back(root_ + path->string());
        for (const auto& location : searchLocations(user_))
            if (files_->isDirectoryFollowingLinks(location.url))
                list.push_back(root_ + location.url.string());
        const Command tidwen = {program_, "--volume", root_, "scan", application, "--json"};

        std::printf("\n%s: %zu folders and files found, %zu places listed\n", application.c_str(),
                    du.size() - 3, list.size() - 3);
        bool holds = true;
        for (const int cores : {1, 2}) {
            const auto seconds = tidwen::bench::secondsOf(
                21, {[&] { run(du, cores), run(list, cores); }, [&] { run(tidwen, cores); }});
            std::printf("%d core%s: du and ls %.1f ms, tidwen scan %.1f ms, ratio %.2f\n", cores,
                        cores > 1 ? "s" : "", seconds[0] * 1e3, seconds[1] * 1e3, seconds[1] / seconds[0]);
            if (isMeasured)
                holds &= tidwen::bench::printRatio("scan against du and ls", seconds[1] / seconds[0],
                                                   "<=", cores == 1 ? 1.2 : 0.8);
        }
        const double memory = static_cast<double>(run(tidwen, 2)) / 1024;
        if (isMeasured) holds &= tidwen::bench::printRatio("peak memory, MiB", memory, "<=", 64);
        printParts(application);
        return holds;
    }

    bool compareStart() const {
        const auto seconds = tidwen::bench::secondsOf(21, {[] { run({"/bin/true"}, 2); },
                                                           [&] {
                                                               run({program_, "--version"}, 2);
                                                           }});
        std::printf("\n");
        return tidwen::bench::printRatio("tidwen --version longer than /bin/true, ms",
                                         (seconds[1] - seconds[0]) * 1e3, "<=", 10);
    }

  private:
    static std::unique_ptr<RootedFileSystem> opened(const std::string& root) {
        auto files = RootedFileSystem::open(root);
        if (!files) std::exit(1);
        return std::move(*files);
    }

    AppTarget load(const std::string& application) const {
        auto target = AppTargetLoader(*files_, FileCodeSignatures(*files_)).load(Path(application));
        if (target) return *target;
        std::fprintf(stderr, "%s is no application\n", application.c_str());
        std::exit(1);
    }

    std::shared_ptr<const BundleSnapshot> look() const {
        return InstalledBundles(*files_, signatures_, user_).look(InstalledBundles::Reach::usual);
    }

    ScanResult scan(const std::string& application) const { return scan(load(application), look()); }

    ScanResult scan(const AppTarget& target, std::shared_ptr<const BundleSnapshot> bundles) const {
        const VolumeReceipts receipts(*files_);
        const VolumeKeychain keychain;
        const VolumeSystemExtensions extensions(*files_);
        const Texts texts;
        QuietLog log;
        ResidueScanner scanner({*files_, receipts, keychain, extensions, texts, log}, user_,
                               std::move(bundles));
        return scanner.scan(target);
    }

    /// Time per part, inside this process.
    void printParts(const std::string& application) const {
        const auto target = load(application);
        const auto bundles = look();
        bundles->readAllContents({});
        const auto seconds = tidwen::bench::secondsOf(
            11, {[&] { look(); }, [&] { scan(target, look()); }, [&] { scan(target, bundles); }});
        std::printf("of which: installed bundles %.1f ms, with the scan %.1f ms (the scan alone, others' "
                    "contents read: "
                    "%.1f ms)\n",
                    seconds[0] * 1e3, seconds[1] * 1e3, seconds[2] * 1e3);
    }

    std::string root_;
    std::string program_;
    std::unique_ptr<RootedFileSystem> files_;
    FileCodeSignatures signatures_{*files_};
    UserEnvironment user_;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 4) return std::fprintf(stderr, "usage: scan_bench VOLUME TIDWEN APPLICATION…\n"), 2;
    ScanBench bench(std::filesystem::canonical(argv[1]).string(), argv[2]);
    bool holds = true;
    for (int i = 3; i < argc; ++i)
        holds &= bench.compare(argv[i], i == 3);
    holds &= bench.compareStart();
    return holds ? 0 : 1;
}

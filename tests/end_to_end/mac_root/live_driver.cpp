// Runs inside a root that is laid out like a Mac's, with the composition of a running Mac: removes
// applications with everything that is found of them, undoes the newest run, or deletes quarantine folders
// (all that have expired, as the start of a program does), and prints one line per outcome.
//
//     live_driver PROMPT_TIMEOUT_MS remove BUNDLE...
//     live_driver PROMPT_TIMEOUT_MS undo
//     live_driver PROMPT_TIMEOUT_MS purge RUN...
//     live_driver PROMPT_TIMEOUT_MS expire

#include "inventory/installed_applications.h"
#include "operations/admin_script_runner.h"
#include "operations/keychain_dump.h"
#include "operations/tool_receipts.h"
#include "operations/tool_system_extensions.h"
#include "operations/user_scope_runner.h"
#include "platform/file_code_signatures.h"
#include "posix/posix_process_runner.h"
#include "posix/rooted_file_system.h"
#include "quarantine/history.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/undo_service.h"
#include "removal/removal_executor.h"
#include "removal/removal_plan.h"
#include "scan/matching/residue_scanner.h"
#include "volume/volume_sources.h"

#include <fmt/format.h>
#include <string_view>
#include <unistd.h>

namespace {

using namespace tidwen;

/// The user's own keychain is reached through a framework that only a Mac has; the system's through a tool.
class SystemKeychain : public Keychain {
  public:
    explicit SystemKeychain(ProcessRunner& processes) : processes_(processes) {}
    std::vector<KeychainEntry> entries() const override { return listSystemKeychain(processes_); }
    std::int32_t deleteItems(KeychainItemClass, const std::string&) override { return keychainItemNotFound; }

  private:
    ProcessRunner& processes_;
};

class LiveMac {
  public:
    LiveMac(FileSystem& files, std::chrono::milliseconds promptTimeout)
        : files_(files),
          administrator_(AdminScriptRunner::throughOsascript(processes_, promptTimeout)),
          userRunner_({files, processes_, keychain_, applications_, log_}, user_),
          privilegedRunner_(administrator_, files, user_, log_),
          purge_(files, user_, administrator_, log_) {}

    int remove(const std::vector<std::string>& bundles) {
        std::vector<RemovalTarget> targets;
        std::vector<AppRecord> apps;
        for (const auto& bundle : bundles) {
            const auto target = AppTargetLoader(files_, signatures_).load(Path(bundle));
            if (!target) return 2;
            targets.push_back({*target, scan(*target).traces});
            apps.push_back({target->name, target->bundleID});
        }
        const Timestamp date{std::chrono::hours(473'000)}; // some day in 2023
        const auto layout = createQuarantineFolder(apps, date, user_, files_);
        if (!layout) return 2;
        const auto plan = buildRemovalPlan(targets, *layout, RemovalMode::uninstall, texts_);
        RemovalExecutor executor({files_, userRunner_, privilegedRunner_, log_});
        const auto report = executor.execute(plan, *layout, apps, RemovalMode::uninstall, date);
        if (!report) return 2;
        for (const auto& operation : report->operations)
            print(operation, report->results);
        return 0;
    }

    int undo() {
        const auto history = loadHistory(user_, files_, false);
        if (history.empty()) return 2;
        const SystemClock clock;
        UndoService service({files_, privilegedRunner_, userRunner_, texts_, log_, clock}, user_);
        const auto report = service.undo(history.front().manifest);
        fmt::print("{} {} {}\n", report.restoredCount, report.totalCount, report.relaunchedJobs);
        for (const auto& failure : report.failures)
            fmt::print("{}\n", failure);
        return 0;
    }

    int purge(const std::vector<std::string>& folders) {
        const auto outcome = purge_.purge({folders.begin(), folders.end()});
        if (!outcome) {
            fmt::print("refused: {}\n", outcome.error().describe().value_or(Message{"dismissed"}).key);
            return 0;
        }
        fmt::print("removed {}\n", outcome->removedFolders);
        for (const auto& folder : outcome->kept)
            fmt::print("kept {}\n", folder.string());
        return 0;
    }

    int expire() {
        fmt::print("removed {}\n", purge_.purgeExpired(7, SystemClock().now()));
        return 0;
    }

  private:
    ScanResult scan(const AppTarget& target) {
        ResidueScanner scanner(
            {files_, receipts_, keychain_, extensions_, texts_, log_}, user_,
            InstalledBundles(files_, signatures_, user_).look(InstalledBundles::Reach::usual));
        return scanner.scan(target);
    }

    static void print(const RemovalOperation& operation, const std::vector<OperationResult>& results) {
        for (const auto& result : results) {
            if (result.operationID != operation.id) continue;
            const auto reason = result.failureReason.value_or(Message{"ok"});
            fmt::print("{} {} {}\n", operation.requiresRoot ? "root" : "user", kindName(operation.kind),
                       reason.key);
        }
    }

    FileSystem& files_;
    UserEnvironment user_{Path("/Users/alice"), getuid(), std::nullopt, std::nullopt};
    StandardErrorLog log_{LogLevel::warning};
    Texts texts_; // keys stand for themselves
    PosixProcessRunner processes_;
    FileCodeSignatures signatures_{files_};
    ToolReceipts receipts_{processes_};
    ToolSystemExtensions extensions_{processes_};
    SystemKeychain keychain_{processes_};
    VolumeRunningApplications applications_;
    AdminScriptRunner::Execute administrator_;
    UserScopeRunner userRunner_;
    AdminScriptRunner privilegedRunner_;
    QuarantinePurge purge_;
};

} // namespace

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + 1, words + count);
    const auto files = RootedFileSystem::open("/");
    if (!files || arguments.size() < 2) return 2;
    LiveMac mac(**files, std::chrono::milliseconds(std::stoi(arguments[0])));
    const std::vector<std::string> operands(arguments.begin() + 2, arguments.end());
    if (arguments[1] == "undo") return mac.undo();
    if (arguments[1] == "expire") return mac.expire();
    return arguments[1] == "purge" ? mac.purge(operands) : mac.remove(operands);
}

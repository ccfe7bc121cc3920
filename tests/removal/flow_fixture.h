#pragma once

#include "base/path.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "platform/file_code_signatures.h"
#include "platform/user_environment.h"
#include "quarantine/quarantine_purge.h"
#include "quarantine/trash_lock.h"
#include "quarantine/undo_service.h"
#include "removal/removal_executor.h"
#include "removal/removal_flow_model.h"
#include "removal/startup_chores.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/removability.h"
#include "scan/policy/trace_category.h"
#include "settings/app_preferences.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"
#include "support/stand_ins.h"
#include "sweep/orphan_scanner.h"
#include "sweep/reclaimed_finds.h"
#include "volume/volume_runner.h"
#include "volume/volume_sources.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen::test {

/// The flow on a volume with four applications and an orphan, run step by step.
class FlowFixture : public SteppedQueues {
  public:
    FlowFixture() {
        clock.time = *parseIso8601("2026-11-14T17:26:00Z");
        for (const std::string name : {"Alpine", "Birch", "Cedar", "Dogwood"}) {
            writeBundle(volume, bundle(name).string(), "com.example." + name, name);
            volume.write(cache(name).string(), "x");
        }
        volume.write(orphan.displayName, "x");
    }

    static Path bundle(const std::string& name) { return Path("/Applications") / (name + ".app"); }
    static Path cache(const std::string& name) {
        return Path("/Users/alice/Library/Caches/com.example." + name);
    }
    void review(const std::vector<std::string>& names) {
        model->loadTargets(eachOf(names, &FlowFixture::bundle));
        settle();
    }
    void remove(const std::vector<std::string>& names) {
        review(names);
        model->confirm();
        settle();
    }
    std::string stage() const { return std::string(name(model->stage())); }
    bool has(const Path& path) const { return volume.exists(path.string()); }
    std::set<std::string> selected() const {
        std::set<std::string> names;
        for (const auto& each : model->choice().going())
            for (const auto* trace : each.traces)
                names.insert(trace->displayName);
        return names;
    }

    TemporaryVolume volume;
    const UserEnvironment user = alice();
    Trace orphan = makeTrace(TraceCategory::caches, action::MovePath{cache("Gone")}, {},
                             Reversibility::reversible, cache("Gone").string(), 1, false);
    RecordingLog log;
    MemoryDefaults defaults;
    FixedClock clock;
    FakeApplications running;
    Texts texts;             // prints keys
    Reclaimed reclaimed;     ///< what has an owner when a removal begins
    bool seesOthers = false; ///< scans ask what other applications own

  private:
    std::unique_ptr<ResidueScanner> makeScanner() {
        return std::make_unique<ResidueScanner>(
            ResidueScanner::Ports{volume.files(), receipts, keychain, extensions, texts, log}, user,
            seesOthers ? bundles.look(InstalledBundles::Reach::usual) : nullptr);
    }

    FileCodeSignatures signatures{volume.files()};
    InstalledBundles bundles{volume.files(), signatures, user};
    VolumeReceipts receipts{volume.files()};
    VolumeSystemExtensions extensions{volume.files()};
    VolumeKeychain keychain;
    AppTargetLoader loader{volume.files(), signatures};
    VolumeRunner runner{volume.files(), user, log};
    RemovalExecutor executor{{volume.files(), runner, runner, log}};
    UndoService undo{{volume.files(), runner, runner, log, clock}, user};
    QuarantinePurge purge{volume.files(), user, std::nullopt, log};
    PermissionAudit audit{volume.files(), user, texts};

  public:
    ProtectedApps protectedApps{defaults};
    AppPreferences preferences{defaults};
    std::unique_ptr<RemovalFlowModel> model = std::make_unique<RemovalFlowModel>(
        RemovalFlowModel::Services{
            .files = volume.files(),
            .loader = loader,
            .makeScanner = [this](BundleReach) { return makeScanner(); },
            .sweepOrphans =
                [this](const StopToken&, const auto& onFound, const OnStep&) {
                    onFound({orphan});
                    return OrphanScanResult{{{"com.example.gone", "Gone", {orphan}}}, {}};
                },
            .findReclaimed = [this](const auto&) { return reclaimed; },
            .running = running,
            .executor = executor,
            .undo = undo,
            .rights = MoveRights::own,
            .audit = audit,
            .readProtection = [this] { return readProtection(defaults); },
            .preferences = preferences,
            .texts = texts,
            .clock = clock,
            .log = log,
            .main = main,
            .background = background,
            .treeQueue = background},
        user);
    StartupChores chores{{.files = volume.files(),
                          .undo = undo,
                          .purge = purge,
                          .preferences = preferences,
                          .texts = texts,
                          .clock = clock,
                          .log = log,
                          .main = main,
                          .background = background},
                         user};
};

} // namespace tidwen::test

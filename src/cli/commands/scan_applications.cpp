#include "cli/commands/scan_applications.h"

#include "cli/console.h"
#include "cli/intake.h"
#include "inventory/installed_applications.h"
#include "scan/residue_scanner.h"

namespace tidwen {

ScannedApplications scanApplications(const CommandContext& context, Mac& mac) {
    const auto& system = mac.system;
    const auto bundles = findApplicationBundles(system.files, system.user);
    const auto installed = readIdentities(system.files, bundles);
    const ApplicationFinder finder(system.files, installed, HostPaths(mac.volume));
    const AppTargetLoader loader(system.files, system.signatures);
    const auto intake = loadTargets(context.arguments.operands, finder, loader,
                                    ProtectedApps(system.defaults), context.texts);
    for (const auto& failure : intake.failures)
        context.console.complain(failure);

    ResidueScanner scanner(
        {system.files, system.receipts, system.keychain, system.systemExtensions, system.texts, system.log},
        system.user, {installed, [&](const Path& target) {
                          return groupsOfOthers(system.files, system.signatures, bundles, target);
                      }});
    ScannedApplications scanned{.results = {}, .someRefused = !intake.failures.empty()};
    for (const auto& target : intake.targets)
        scanned.results.push_back(scanner.scan(target, {}, [&](const std::string& phase) {
            context.console.progress(context.text("cli.scan.progress %@ %@", {target.name, phase}));
        }));
    context.console.endProgress();
    return scanned;
}

} // namespace tidwen

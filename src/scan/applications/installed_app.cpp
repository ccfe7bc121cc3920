#include "scan/applications/installed_app.h"

#include "base/path.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/applications/bundle.h"

namespace tidwen {

std::optional<InstalledApp> makeInstalledApp(const FileSystem& files, const CodeSignatures& signatures,
                                             const Path& url) {
    auto target = AppTargetLoader(files, signatures).load(url);
    const auto bundle = target ? Bundle::open(files, url) : std::nullopt;
    if (!bundle) return std::nullopt;
    const auto* category = bundle->infoString("LSApplicationCategoryType");
    return InstalledApp{.url = url,
                        .name = std::move(target->name),
                        .bundleID = std::move(target->bundleID),
                        .teamID = std::move(target->teamID),
                        .version = std::move(target->version),
                        .category = category ? std::optional(*category) : std::nullopt,
                        .isBackgroundAgent =
                            bundle->infoFlag("LSUIElement") || bundle->infoFlag("LSBackgroundOnly"),
                        .hasResidentHelper = false,
                        .sizeBytes = std::nullopt,
                        .usage = std::nullopt,
                        .isSizePartial = false};
}

} // namespace tidwen

#include "app/shell/drop_words.h"

#include "app/shell/dropped_items.h"
#include "app/widgets/words.h"
#include "base/path.h"
#include "removal/flow_types.h"
#include "scan/applications/installed_app.h"

#include <algorithm>
#include <variant>

namespace tidwen {

QString whyNoLook(OpenMac& mac) {
    const auto& texts = mac.system().texts;
    if (mac.isBusy()) return words(texts, "drop.busy");
    const bool isScanning = std::holds_alternative<stage::Scanning>(mac.flow().stage());
    return isScanning ? words(texts, "drop.scanning") : QString();
}

QString wordsForDrop(OpenMac& mac, const std::vector<std::string>& hostPaths) {
    if (auto why = whyNoLook(mac); !why.isEmpty()) return why;
    const auto& texts = mac.system().texts;
    const auto bundles = std::ranges::count_if(hostPaths, looksLikeApplication);
    if (bundles == 0) return words(texts, "drop.noApplication");
    const auto isProtected = [&](const std::string& path) {
        const auto& apps = mac.session().models().homeGrid().apps();
        return std::ranges::any_of(apps, [&](const SharedApp& app) {
            return app->url.lastComponent() == Path(path).lastComponent()
                   && mac.session().protectedApps().contains(app->bundleID);
        });
    };
    const auto kept = std::ranges::count_if(hostPaths, isProtected);
    auto result = words(texts, "drop.look %lld", {std::to_string(bundles)});
    if (kept > 0) result += QLatin1Char('\n') + words(texts, "drop.protected %lld", {std::to_string(kept)});
    return result;
}

} // namespace tidwen

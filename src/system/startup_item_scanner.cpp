#include "system/startup_item_scanner.h"

#include "base/text.h"
#include "scan/launch_item.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tidwen {

namespace {

using Owner = StartupItem::Owner;

std::vector<std::string> pieces(const std::string& label) {
    std::vector<std::string> result;
    std::size_t start = 0;
    while (start <= label.size()) {
        const auto dot = std::min(label.find('.', start), label.size());
        if (dot > start) result.push_back(label.substr(start, dot - start));
        start = dot + 1;
    }
    return result;
}

std::string joined(const std::vector<std::string>& parts, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += (i ? "." : "") + parts[i];
    return result;
}

Owner installed(const InstalledApp& app) {
    return {Owner::Kind::installed, app.name, app.bundleID, {}};
}

/// Words that many products use in their labels, so that sharing one says nothing.
bool isCommonWord(std::string_view word) {
    static constexpr std::array<std::string_view, 13> words = {
        "agent",  "client", "daemon", "helper", "service",   "services",   "updater",
        "update", "launch", "login",  "system", "uninstall", "uninstaller"};
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool sharesVendor(const std::vector<std::string>& label, const std::string& bundleID) {
    const auto other = pieces(bundleID);
    return label.size() >= 3 && other.size() >= 3 && label[0] == other[0] && label[1] == other[1];
}

bool sharesToken(const std::vector<std::string>& label, const std::string& bundleID) {
    return std::any_of(label.begin(), label.end(), [&](const std::string& piece) {
        return characterCount(piece) >= 5 && !isCommonWord(piece)
               && bundleID.find(piece) != std::string::npos;
    });
}

const InstalledApp* containing(const std::string& program, const std::vector<InstalledApp>& apps) {
    const auto path = Path(program).standardized();
    const auto found = std::find_if(apps.begin(), apps.end(), [&](const InstalledApp& app) {
        const auto bundle = app.url.standardized();
        return path != bundle && path.isWithin(bundle);
    });
    return found == apps.end() ? nullptr : &*found;
}

const InstalledApp* identifiedBy(const std::string& label, const std::vector<InstalledApp>& apps) {
    const auto found = std::find_if(apps.begin(), apps.end(), [&](const InstalledApp& app) {
        const auto bundleID = lowercased(app.bundleID);
        return !bundleID.empty() && (label == bundleID || label.starts_with(bundleID + "."));
    });
    return found == apps.end() ? nullptr : &*found;
}

const InstalledApp* relatedTo(const std::vector<std::string>& label, const std::vector<InstalledApp>& apps) {
    const auto found = std::find_if(apps.begin(), apps.end(), [&](const InstalledApp& app) {
        const auto bundleID = lowercased(app.bundleID);
        return sharesVendor(label, bundleID) || sharesToken(label, bundleID);
    });
    return found == apps.end() ? nullptr : &*found;
}

StartupItem makeItem(const LaunchItem& job, StartupItem::Source source, Owner owner) {
    return {job.label, std::move(source), job.isSystemDomain, job.programPath, std::move(owner)};
}

} // namespace

std::vector<StartupItemScanner::Directory> StartupItemScanner::directories(const UserEnvironment& user) {
    return {{user.libraryFolder() / "LaunchAgents", false},
            {Path("/Library/LaunchAgents"), false},
            {Path("/Library/LaunchDaemons"), true}};
}

Owner StartupItemScanner::attributeOwner(const std::string& label,
                                         const std::optional<std::string>& programPath,
                                         const std::vector<InstalledApp>& apps) const {
    const auto lowered = lowercased(label);
    if (lowered.starts_with("com.apple.")) return {Owner::Kind::apple, {}, {}, {}};
    if (const auto* app = programPath ? containing(*programPath, apps) : nullptr) return installed(*app);
    if (const auto* app = identifiedBy(lowered, apps)) return installed(*app);

    const auto parts = pieces(lowered);
    for (auto count = parts.size(); count >= 3; --count)
        if (const auto parent = joined(parts, count - 1); isRegistered_(parent))
            return {Owner::Kind::registered, {}, parent, {}};
    if (const auto* app = relatedTo(parts, apps)) return {Owner::Kind::related, app->name, {}, {}};
    if (programPath && files_.infoFollowingLinks(Path(*programPath)))
        return {Owner::Kind::program, {}, {}, *programPath};
    return {parts.size() >= 2 ? Owner::Kind::missing : Owner::Kind::unknown, {}, {}, {}};
}

StartupScanResult StartupItemScanner::scan(const std::vector<InstalledApp>& apps) const {
    StartupScanResult result;
    for (const auto& [folder, isSystemDomain] : directories(user_)) {
        if (!files_.exists(folder)) continue;
        const auto jobs = listLaunchItems(files_, folder, isSystemDomain);
        if (jobs.empty() && !files_.list(folder)) result.unreadable.push_back(folder);
        for (const auto& job : jobs)
            result.items.push_back(makeItem(job, StartupItem::Plist{job.plist},
                                            attributeOwner(job.label, job.programPath, apps)));
    }
    for (const auto& app : apps) {
        const auto library = app.url / "Contents/Library";
        for (const auto& [folder, isSystemDomain] :
             {std::pair("LaunchAgents", false), std::pair("LaunchDaemons", true)})
            for (const auto& job : listLaunchItems(files_, library / folder, isSystemDomain))
                result.items.push_back(
                    makeItem(job, StartupItem::Embedded{app.url, app.name}, installed(app)));
    }
    std::stable_sort(result.items.begin(), result.items.end(),
                     [](const StartupItem& a, const StartupItem& b) {
                         const bool aIsOrphan = a.owner.kind == Owner::Kind::missing,
                                    bIsOrphan = b.owner.kind == Owner::Kind::missing;
                         if (aIsOrphan != bIsOrphan) return aIsOrphan;
                         return compareForDisplay(lowercased(a.label), lowercased(b.label)) < 0;
                     });
    return result;
}

} // namespace tidwen

#include "scan/applications/app_target.h"

#include "base/text.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "scan/applications/bundle.h"
#include "scan/applications/shared_names.h"

#include <algorithm>
#include <array>

namespace tidwen {
namespace {

/// Judged by the real location of the bundle: the safety policy would keep the application but let its data
/// go.
bool belongsToSystem(const FileSystem& files, const std::string& identifier, const Path& bundle) {
    if (isFromApple(identifier)) return true;
    const Path place = files.resolveParent(bundle.standardized()).value_or(bundle.standardized());
    return std::ranges::any_of(std::array{"/System", "/usr", "/bin", "/sbin"},
                               [&](const char* folder) { return place.isWithinIgnoringCase(Path(folder)); });
}

std::optional<std::string> copied(const std::string* text) {
    return text ? std::optional(*text) : std::nullopt;
}

std::vector<LaunchItem> embeddedJobs(const FileSystem& files, const Path& bundle) {
    auto jobs = listLaunchItems(files, bundle / "Contents/Library/LaunchAgents", false);
    for (auto& daemon : listLaunchItems(files, bundle / "Contents/Library/LaunchDaemons", true))
        jobs.push_back(std::move(daemon));
    return jobs;
}

std::vector<std::string> loginItems(const FileSystem& files, const Path& bundle) {
    // Each one requires reading a property list; applications have one or two.
    constexpr std::size_t maximumLoginItems = 500;
    std::vector<std::string> identifiers;
    const Path folder = bundle / "Contents/Library/LoginItems";
    const auto entries = files.list(folder);
    if (!entries) return identifiers;
    for (const auto& entry : *entries) {
        if (identifiers.size() == maximumLoginItems) break;
        const Path item = folder / entry.name;
        if (item.lowercasedExtension() != "app") continue;
        const auto helper = Bundle::open(files, item);
        if (const auto identifier = helper ? helper->identifier() : std::nullopt)
            identifiers.push_back(*identifier);
    }
    std::ranges::sort(identifiers);
    return identifiers;
}

} // namespace

std::string_view errorKey(AppTargetLoaderError error) {
    switch (error) {
    case AppTargetLoaderError::notAnApplication:
        return "error.notAnApplication";
    case AppTargetLoaderError::unreadableBundle:
        return "error.unreadableBundle";
    case AppTargetLoaderError::missingBundleIdentifier:
        return "error.missingBundleIdentifier";
    case AppTargetLoaderError::systemApplication:
        return "error.systemApplication";
    case AppTargetLoaderError::selfTarget:
        return "error.selfTarget";
    }
    return {};
}

tl::expected<AppTarget, AppTargetLoaderError> AppTargetLoader::load(const Path& url) const {
    using Error = AppTargetLoaderError;
    if (url.lowercasedExtension() != "app") return tl::unexpected(Error::notAnApplication);
    if (!isValidUtf8(url.string()))
        return tl::unexpected(Error::unreadableBundle); // no manifest can store its path
    const auto bundle = Bundle::open(files_, url);
    if (!bundle) return tl::unexpected(Error::unreadableBundle);
    const auto identifier = bundle->identifier();
    if (!identifier) return tl::unexpected(Error::missingBundleIdentifier);
    if (belongsToSystem(files_, *identifier, url)) return tl::unexpected(Error::systemApplication);
    if (lowercased(*identifier) == tidwenBundleID) return tl::unexpected(Error::selfTarget);
    // The policy compares paths by their words, and ".." after a link means another place than its words.
    if (url.hasTraversal()) return tl::unexpected(Error::notAnApplication);

    auto signature = signatures_.read(url, bundle->executable());
    return AppTarget{.bundleURL = url,
                     .bundleID = *identifier,
                     .name = bundle->name(),
                     .teamID = std::move(signature.teamID),
                     .version = copied(bundle->infoString("CFBundleShortVersionString")),
                     .executableName = copied(bundle->infoString("CFBundleExecutable")),
                     .appGroups = std::move(signature.applicationGroups),
                     .embeddedLaunchdItems = embeddedJobs(files_, url),
                     .loginItemBundleIDs = loginItems(files_, url)};
}

} // namespace tidwen

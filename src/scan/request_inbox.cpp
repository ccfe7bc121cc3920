#include "scan/request_inbox.h"

#include "base/json.h"
#include "base/text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tidwen {

std::optional<UninstallRequest> decodeRequest(std::string_view text) {
    const auto json = parseJson(text, RequestInbox::maxRequestBytes);
    if (!json || !json->is_object() || !json->contains("paths") || !json->at("paths").is_array())
        return std::nullopt;
    UninstallRequest request;
    for (const auto& path : json->at("paths")) {
        if (!path.is_string()) return std::nullopt;
        request.paths.push_back(path.get<std::string>());
    }
    return request;
}

std::string encode(const UninstallRequest& request) {
    return writeJson(nlohmann::json{{"paths", request.paths}});
}

Path RequestInbox::fallbackContainer(const UserEnvironment& user) {
    return user.libraryFolder() / "Group Containers" / tidwenApplicationGroup;
}

std::optional<Path> RequestInbox::folder() const {
    return container_ ? std::optional(*container_ / "requests") : std::nullopt;
}

bool RequestInbox::post(const UninstallRequest& request, const std::string& fileName) {
    const auto requests = folder();
    if (!requests || !files_.createDirectories(*requests)) return false;
    return files_.replaceFile(*requests / (fileName + ".json"), encode(request), NewFileMode::privateToOwner)
        .has_value();
}

std::vector<Path> RequestInbox::drain() {
    std::vector<Path> paths;
    const auto requests = folder();
    const auto entries = requests ? files_.list(*requests) : FileResult<std::vector<DirectoryEntry>>();
    if (!requests || !entries) return paths;
    std::size_t taken = 0;
    for (const auto& entry : *entries)
        if (entry.name.ends_with(".json") && taken < maxRequestsPerDrain) {
            take(*requests / entry.name, paths);
            ++taken;
        }
    if (taken == 0) return paths;
    if (paths.empty())
        log_.info("Finder request dropped: nothing at the paths it named");
    else
        log_.info("Serving Finder request for {} app(s)", paths.size());
    return paths;
}

void RequestInbox::take(const Path& file, std::vector<Path>& paths) {
    const auto info = files_.info(file);
    const bool isPlain = info && info->kind == FileKind::regular;
    const auto content = isPlain ? files_.read(file, maxRequestBytes) : FileResult<std::string>();
    const auto request = isPlain && content ? decodeRequest(*content) : std::nullopt;
    // Removed first: a request that cannot be removed would be served again and again.
    if (!files_.removeFile(file) || !request) return;
    for (const auto& path : request->paths) {
        if (paths.size() >= maxPathsPerDrain) break;
        if (isAcceptable(path) && std::find(paths.begin(), paths.end(), Path(path)) == paths.end())
            paths.emplace_back(path);
    }
}

bool RequestInbox::isAcceptable(const std::string& path) const {
    const Path url(path);
    if (!url.isAbsolute() || url.hasTraversal() || path.find('\0') != std::string::npos) return false;
    const auto info = files_.info(url);
    return info && info->kind != FileKind::symbolicLink;
}

void RequestInbox::setFinderGate(bool enabled) {
    if (!container_) return;
    const auto gate = *container_ / "finder-gate.json";
    if (!enabled) {
        (void)files_.removeFile(gate);
        return;
    }
    if (files_.createDirectories(*container_))
        (void)files_.replaceFile(gate, "{}", NewFileMode::privateToOwner);
}

} // namespace tidwen

#include "system/request_inbox.h"

#include "base/json.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/file_absence.h"
#include "platform/unfinished_names.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tidwen {

std::optional<UninstallRequest> decodeRequest(std::string_view text) {
    const auto json = parseJson(text, RequestInbox::maxRequestBytes);
    if (!json || !json->is_object() || !json->contains("paths") || !json->at("paths").is_array())
        return std::nullopt;
    if (json->at("paths").size() > RequestInbox::maxPathsPerRequest) return std::nullopt;
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

OwnBundle ownBundle(std::string_view bundlePath, const PropertyListDictionary& info) {
    OwnBundle bundle{.isExtension = bundlePath.ends_with(".appex")};
    const auto found = info.find("CorvellaAppGroup");
    const auto* group = found == info.end() ? nullptr : found->second.asString();
    if (group && !group->empty() && group->front() != '.' && group->find('/') == std::string::npos)
        bundle.group = *group;
    return bundle;
}

std::optional<Path> RequestInbox::fallbackContainer(const UserEnvironment& user, const OwnBundle& bundle) {
    if (bundle.isExtension) return std::nullopt;
    return user.libraryFolder() / "Group Containers" / bundle.group;
}

std::optional<Path> RequestInbox::folder() const {
    return container_ ? std::optional(*container_ / "requests") : std::nullopt;
}

bool RequestInbox::post(const UninstallRequest& request, const std::string& fileName) {
    const auto requests = folder();
    const auto text = encode(request);
    // Does not post what a drain would read differently.
    if (!requests || decodeRequest(text) != request || !files_.createDirectories(*requests)) return false;
    return files_.replaceFile(*requests / (fileName + ".json"), text, NewFileMode::privateToOwner)
        .has_value();
}

/// What the current drain has taken so far.
struct RequestInbox::Taken {
    std::size_t files = 0;
    std::size_t bytes = 0;
    std::size_t named = 0; ///< paths, acceptable or not: each requires a look at the disk
    Drained drained;

    bool isEnough() const {
        return files >= maxRequestsPerDrain || bytes >= maxBytesPerDrain || named >= maxPathsPerDrain;
    }
};

RequestInbox::Listing RequestInbox::list() const {
    const auto requests = folder();
    if (!requests) return {};
    const auto place = files_.info(*requests);
    if (!place) return {.isClosed = !isAbsence(place.error())};
    if (place->kind != FileKind::directory) return {};
    const auto entries = files_.list(*requests);
    if (!entries) return {.isClosed = !isAbsence(entries.error())};
    Listing found;
    for (const auto& entry : *entries) {
        if (!entry.name.ends_with(".json")
            || (entry.kind != FileKind::regular && entry.kind != FileKind::symbolicLink))
            continue;
        const bool isUnfinished = entry.name.starts_with(unfinishedReplacementPrefix);
        (isUnfinished ? found.unfinished : found.requests).push_back(*requests / entry.name);
    }
    return found;
}

std::size_t RequestInbox::waiting() const {
    return list().requests.size();
}

std::vector<Message> RequestInbox::Drained::refusals() const {
    std::vector<Message> all;
    all.reserve(refused.size() + 1);
    for (const auto& path : refused)
        all.push_back({"cli.requests.refused %@", {path}});
    if (unreadable > 0) all.push_back({"cli.requests.unreadable %lld", {std::to_string(unreadable)}});
    return all;
}

RequestInbox::Drained RequestInbox::drain() {
    Taken taken;
    const auto [files, unfinished, isClosed] = list();
    for (const auto& each : unfinished) // left by a kill; one that is still being written stays
        files_.dropUnfinishedReplacement(each.parent()
                                         / each.lastComponent().substr(unfinishedReplacementPrefix.size()));
    for (const auto& file : files) {
        if (taken.isEnough()) break;
        take(file, taken);
    }
    taken.drained.waiting = files.size() - taken.files;
    taken.drained.isClosed = isClosed;
    if (taken.files == 0) return std::move(taken.drained);
    if (taken.drained.paths.empty())
        log_.info("Finder request dropped: nothing at the paths it named");
    else
        log_.info("Serving Finder request for {} app(s)", taken.drained.paths.size());
    return std::move(taken.drained);
}

std::optional<std::string> RequestInbox::readRequest(const Path& file) const {
    const auto info = files_.info(file);
    if (!info || info->kind != FileKind::regular) return std::nullopt; // reading would follow a link
    auto content = files_.read(file, maxRequestBytes);
    return content ? std::optional(std::move(*content)) : std::nullopt;
}

void RequestInbox::take(const Path& file, Taken& taken) {
    ++taken.files;
    const auto content = readRequest(file);
    const bool isRemoved = files_.removeFile(file).has_value();
    taken.drained.taken += isRemoved;
    // A request that cannot be removed would be served repeatedly.
    const auto request = content && isRemoved ? decodeRequest(*content) : std::nullopt;
    if (content) taken.bytes += content->size();
    if (!request) {
        ++taken.drained.unreadable;
        return;
    }
    taken.named += request->paths.size();
    judge(*request, taken.drained);
}

void RequestInbox::judge(const UninstallRequest& request, Drained& drained) const {
    const auto addOnce = [](auto& list, const auto& item) {
        if (std::find(list.begin(), list.end(), item) == list.end()) list.push_back(item);
    };
    for (const auto& path : request.paths)
        if (isAcceptable(path))
            addOnce(drained.paths, Path(path));
        else
            addOnce(drained.refused, path);
}

bool RequestInbox::isAcceptable(const std::string& path) const {
    const Path url(path);
    if (!url.isAbsolute() || url.hasTraversal() || path.find('\0') != std::string::npos) return false;
    const auto info = files_.info(url);
    return info && info->kind != FileKind::symbolicLink;
}

std::optional<Path> RequestInbox::finderGate() const {
    return container_ ? std::optional(*container_ / "finder-gate.json") : std::nullopt;
}

bool RequestInbox::isFinderGateOpen() const {
    const auto gate = finderGate();
    return gate && files_.exists(*gate);
}

bool RequestInbox::setFinderGate(bool enabled) {
    log_.info("Finder extension enabled: {}", enabled ? 1 : 0);
    const auto place = finderGate();
    if (!place) return false;
    const auto& gate = *place;
    if (!enabled) {
        const auto removed = files_.removeFile(gate);
        return removed || removed.error().fault == FileFault::missing;
    }
    return files_.createDirectories(*container_)
           && files_.replaceFile(gate, "{}", NewFileMode::privateToOwner);
}

} // namespace tidwen

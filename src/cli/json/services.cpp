#include "cli/json/services.h"

#include "base/json.h"
#include "base/path.h"
#include "base/timestamp.h"
#include "cli/json/records.h"

#include <string_view>

namespace tidwen::json {

namespace {

std::string_view name(UpdateState state) {
    switch (state) {
    case UpdateState::upToDate:
        return "upToDate";
    case UpdateState::available:
        return "available";
    case UpdateState::needsNewerSystem:
        return "needsNewerSystem";
    }
    return "upToDate";
}

/// Removes line breaks and indentation; those inside strings are escaped.
std::string onOneLine(const Value& value) {
    const auto document = writeJson(value);
    std::string result;
    for (std::size_t at = 0; at < document.size();) {
        const auto end = document.find('\n', at);
        result.append(document, at, end - at);
        at = document.find_first_not_of(' ', end + 1);
    }
    return result + '\n';
}

Value found(const std::string& url, const std::string& name, const std::string& bundleID, bool isRequested) {
    return {{"url", url}, {"name", name}, {"bundleID", bundleID}, {"requested", isRequested}};
}

Value failure(const std::vector<ErrorText>& errors) {
    Value error;
    for (const auto& each : errors) {
        error["reasons"].push_back(each.text);
        if (!each.key.empty() && !error.contains("key")) error["key"] = each.key;
    }
    return {{"error", std::move(error)}};
}

} // namespace

std::string failureDocument(const std::vector<ErrorText>& errors) {
    return writeJson(failure(errors));
}

std::string failureLine(const std::vector<ErrorText>& errors) {
    return onOneLine(failure(errors));
}

std::string document(const QuarantinePurge::Outcome& outcome, const std::vector<UnfinishedRun>& spared) {
    Value kept = array(spared, [](const UnfinishedRun& run) { return value(run.root); });
    for (const auto& folder : outcome.kept)
        kept.push_back(value(folder));
    return writeJson({{"removedFolders", outcome.removedFolders}, {"kept", std::move(kept)}});
}

std::string document(const UpdateAnswer& answer, std::string_view running) {
    Value object = {{"running", std::string(running)}, {"state", name(answer.state)}};
    if (const auto& release = answer.release)
        object["release"] = {{"version", release->version},
                             {"date", iso8601(release->date)},
                             {"url", release->url},
                             {"notes", release->notes}};
    return writeJson(object);
}

std::string requestsDocument(const std::vector<Path>& applications) {
    return writeJson({{"paths", array(applications, [](const Path& path) { return value(path); })}});
}

std::string gateDocument(bool isOpen) {
    return writeJson({{"isOpen", isOpen}});
}

std::string line(const TrashedApp& app) {
    return onOneLine(found(app.url.string(), app.name, app.bundleID, false));
}

std::string requestLine(const AppTarget& app) {
    return onOneLine(found(app.bundleURL.string(), app.name, app.bundleID, true));
}

} // namespace tidwen::json

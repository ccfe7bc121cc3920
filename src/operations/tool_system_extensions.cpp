#include "operations/tool_system_extensions.h"

#include "base/text.h"
#include "operations/tool_lines.h"
#include "operations/tool_paths.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

namespace tidwen {

namespace {

std::vector<std::string_view> splitAt(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    for (;;) {
        const auto end = std::min(text.find_first_of(separators), text.size());
        parts.push_back(text.substr(0, end));
        if (end == text.size()) return parts;
        text.remove_prefix(end + 1);
    }
}

/// "com.example.filter (1.2/34)" → the identifier.
std::string_view identifierOf(std::string_view withVersion) {
    return withVersion.substr(0, withVersion.find(" ("));
}

/// enabled, active, team, identifier (version), name, [state]: separated by single tabs; the marks may be
/// empty.
std::optional<SystemExtensionRecord> recordFromFields(std::string_view row) {
    const auto fields = splitAt(row, "\t");
    if (fields.size() < 6) return std::nullopt;
    return SystemExtensionRecord{trimmed(fields[2]), trimmed(identifierOf(fields[3])), trimmed(fields[4])};
}

/// The same row with tabs converted to spaces, or its last two fields joined: the identifier is the first
/// word with a dot before "(version)", the team precedes it, and the state is the last "[…]".
std::optional<SystemExtensionRecord> recordFromWords(std::string_view row) {
    const auto state = row.rfind('[');
    if (state == row.npos) return std::nullopt;
    const auto text = row.substr(0, state);
    for (auto bracket = text.find('('); bracket != text.npos; bracket = text.find('(', bracket + 1)) {
        const auto words = trimmed(text.substr(0, bracket));
        const auto before = words.find_last_of(" \t");
        const auto versionEnd = text.find(')', bracket);
        if (before == words.npos || versionEnd == text.npos) continue;
        const auto identifier = words.substr(before + 1);
        if (identifier.find('.') == identifier.npos) continue;

        auto team = trimmed(std::string_view(words).substr(0, before));
        team.erase(0, team.find_last_of(" \t*") + 1);
        return SystemExtensionRecord{team, identifier, trimmed(text.substr(versionEnd + 1))};
    }
    return std::nullopt;
}

} // namespace

std::vector<SystemExtensionRecord> ToolSystemExtensions::list() const {
    const auto result = processes_.run(toolPaths::systemextensionsctl, {"list"}, std::chrono::seconds(20));
    if (!result || result->exitCode != 0) return {};
    return parseSystemExtensionList(result->standardOutput);
}

std::vector<SystemExtensionRecord> parseSystemExtensionList(std::string_view output) {
    std::vector<SystemExtensionRecord> records;
    for (const auto line : linesOf(output)) {
        if (line.starts_with("---") || line.starts_with("enabled")) continue;
        auto record = recordFromFields(line);
        if (!record) record = recordFromWords(line);
        if (!record || record->bundleID.empty()) continue;
        // An old version waiting for a restart is listed beside the new one.
        const bool isKnown = std::any_of(records.begin(), records.end(), [&](const auto& other) {
            return other.bundleID == record->bundleID;
        });
        if (!isKnown) records.push_back(std::move(*record));
    }
    return records;
}

} // namespace tidwen

#include "base/json.h"
#include "base/path_key.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/core.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace tidwen {

namespace {

using nlohmann::json;

bool take(const json& value, std::string& into) {
    if (!value.is_string()) return false;
    into = value.get_ref<const std::string&>();
    return true;
}

bool take(const json& value, bool& into) {
    if (!value.is_boolean()) return false;
    into = value.get<bool>();
    return true;
}

bool take(const json& value, int& into) {
    // Another program may have written the document anew, and some write every number with a point.
    if (value.is_number_float()) {
        const auto number = value.get<double>();
        if (!(std::abs(number) <= std::numeric_limits<int>::max()) || number != std::trunc(number))
            return false;
        into = static_cast<int>(number);
        return true;
    }
    if (!value.is_number_integer()) return false;
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > std::numeric_limits<int>::max())
        return false;
    const auto number = value.get<std::int64_t>();
    if (!std::in_range<int>(number)) return false;
    into = static_cast<int>(number);
    return true;
}

bool take(const json& value, Timestamp& into) {
    if (!value.is_string()) return false;
    const auto moment = parseIso8601(value.get_ref<const std::string&>());
    if (moment) into = *moment;
    return moment.has_value();
}

bool take(const json& value, Path& into) {
    if (!value.is_string()) return false;
    into = Path(value.get_ref<const std::string&>());
    return true;
}

bool take(const json& value, ManifestEntryKind& into) {
    if (value == "move")
        into = ManifestEntryKind::move;
    else if (value == "bootout")
        into = ManifestEntryKind::bootout;
    else
        return false;
    return true;
}

/// Takes typed values out of JSON objects and remembers the first thing that was wrong, so that a document is
/// read straight through and judged once at the end.
class Reader {
  public:
    template<class T>
    T required(const json& object, const char* key) {
        T value{};
        if (const json* found = find(object, key)) {
            if (!take(*found, value)) fail("wrong type of key", key);
        } else {
            fail("missing key", key);
        }
        return value;
    }

    template<class T>
    std::optional<T> optional(const json& object, const char* key) {
        const json* found = find(object, key);
        if (!found || found->is_null()) return std::nullopt;
        return required<T>(object, key);
    }

    /// An array of objects, each read by `readOne`.
    template<class ReadOne>
    auto objects(const json& object, const char* key, ReadOne readOne) {
        std::vector<decltype(readOne(object))> all;
        const json* found = find(object, key);
        if (!found)
            fail("missing key", key);
        else if (!found->is_array() || found->size() > maxManifestEntries)
            fail("wrong type or size of key", key);
        else
            for (const auto& each : *found)
                all.push_back(readOne(each));
        return all;
    }

    void fail(std::string_view what, std::string_view key) {
        if (fault_.empty()) fault_ = fmt::format("{} {}", what, key);
    }

    bool has(const json& object, const char* key) const {
        const json* found = find(object, key);
        return found && !found->is_null();
    }

    template<class Document>
    tl::expected<Document, DocumentError> finish(Document document) const {
        if (fault_.empty()) return document;
        return tl::unexpected(DocumentError{DocumentError::Kind::malformed, fault_});
    }

  private:
    static const json* find(const json& object, const char* key) {
        if (!object.is_object()) return nullptr;
        const auto found = object.find(key);
        return found == object.end() ? nullptr : &*found;
    }

    std::string fault_;
};

/// Four times what a Mac's own calls take.
constexpr std::size_t maxPathBytes = 4096;

/// Absolute and spelled out: no "." or "..", no byte at which a system call would stop reading.
bool isPlainAbsolutePath(const std::string& text) {
    if (text.size() > maxPathBytes || text.find('\0') != text.npos) return false;
    const Path path(text);
    return path.isAbsolute() && path.standardized() == path;
}

/// Below the quarantine folder, and not one of the files that describe it.
bool isQuarantinedItem(const std::string& text, const Path& root) {
    if (!isPlainAbsolutePath(text)) return false;
    const Path item = pathKey(Path(text)), folder = pathKey(root);
    if (item == folder || !item.isWithin(folder)) return false;
    return std::ranges::none_of(std::array{manifestFileName, journalFileName, reserveFileName},
                                [&](const char* name) { return item == folder / name; });
}

void checkPlaces(Reader& reader, const Path& root, const std::vector<ManifestEntry>& entries) {
    if (!isPlainAbsolutePath(root.string()) || root.isRoot()) reader.fail("not a folder:", "quarantineRoot");
    for (const auto& entry : entries) {
        if (entry.kind == ManifestEntryKind::move && !isPlainAbsolutePath(entry.source))
            reader.fail("not an absolute path:", "source");
        if (entry.destination && !isQuarantinedItem(*entry.destination, root))
            reader.fail("outside its folder:", "destination");
        if (entry.plistPath && !isPlainAbsolutePath(*entry.plistPath))
            reader.fail("not an absolute path:", "plistPath");
    }
}

AppRecord readApp(Reader& reader, const json& object) {
    return {.name = reader.required<std::string>(object, "name"),
            .bundleID = reader.required<std::string>(object, "bundleID")};
}

ManifestEntry readEntry(Reader& reader, const json& object) {
    return {.operationID = reader.required<int>(object, "operationID"),
            .kind = reader.required<ManifestEntryKind>(object, "kind"),
            .source = reader.required<std::string>(object, "source"),
            .destination = reader.optional<std::string>(object, "destination"),
            .launchLabel = reader.optional<std::string>(object, "launchLabel"),
            .isSystemDomain = reader.optional<bool>(object, "isSystemDomain"),
            .requiresRoot = reader.required<bool>(object, "requiresRoot"),
            .bundleID = reader.optional<std::string>(object, "bundleID").value_or(""),
            .plistPath = reader.optional<std::string>(object, "plistPath")};
}

std::vector<AppRecord> readApps(Reader& reader, const json& document) {
    return reader.objects(document, "apps", [&](const json& each) { return readApp(reader, each); });
}

std::vector<ManifestEntry> readEntries(Reader& reader, const json& document, const char* key) {
    return reader.objects(document, key, [&](const json& each) { return readEntry(reader, each); });
}

/// A manifest of one application, as they were written before a run could take several.
void readSingleApp(Reader& reader, const json& document, Manifest& manifest) {
    const auto bundleID = reader.optional<std::string>(document, "bundleID").value_or("");
    manifest.apps = {{reader.optional<std::string>(document, "appName").value_or("App"), bundleID}};
    for (auto& entry : manifest.entries)
        if (entry.bundleID.empty()) entry.bundleID = bundleID;
}

json toJson(const std::vector<AppRecord>& apps) {
    json all = json::array();
    for (const auto& app : apps)
        all.push_back({{"name", app.name}, {"bundleID", app.bundleID}});
    return all;
}

json toJson(const std::vector<ManifestEntry>& entries) {
    json all = json::array();
    for (const auto& entry : entries) {
        json one{{"operationID", entry.operationID},
                 {"kind", entry.kind == ManifestEntryKind::move ? "move" : "bootout"},
                 {"source", entry.source},
                 {"requiresRoot", entry.requiresRoot},
                 {"bundleID", entry.bundleID}};
        if (entry.destination) one["destination"] = *entry.destination;
        if (entry.launchLabel) one["launchLabel"] = *entry.launchLabel;
        if (entry.isSystemDomain) one["isSystemDomain"] = *entry.isSystemDomain;
        if (entry.plistPath) one["plistPath"] = *entry.plistPath;
        all.push_back(std::move(one));
    }
    return all;
}

} // namespace

std::string encode(const Manifest& manifest) {
    json document{{"version", manifest.version},
                  {"createdAt", iso8601(manifest.createdAt)},
                  {"quarantineRoot", manifest.quarantineRoot.string()},
                  {"apps", toJson(manifest.apps)},
                  {"entries", toJson(manifest.entries)}};
    if (manifest.recoveredAt) document["recoveredAt"] = iso8601(*manifest.recoveredAt);
    return writeJson(document);
}

std::string encode(const RemovalJournal& journal) {
    return writeJson(json{{"version", journal.version},
                          {"createdAt", iso8601(journal.createdAt)},
                          {"quarantineRoot", journal.quarantineRoot.string()},
                          {"apps", toJson(journal.apps)},
                          {"planned", toJson(journal.planned)}});
}

tl::expected<Manifest, DocumentError> decodeManifest(std::string_view text) {
    const auto document = parseJson(text, maxDocumentBytes);
    if (!document)
        return tl::unexpected(DocumentError{DocumentError::Kind::malformed, "not a JSON document"});
    Reader reader;
    Manifest manifest{.version = reader.required<int>(*document, "version"),
                      .createdAt = reader.required<Timestamp>(*document, "createdAt"),
                      .quarantineRoot = reader.required<Path>(*document, "quarantineRoot"),
                      .apps = {},
                      .entries = readEntries(reader, *document, "entries"),
                      .recoveredAt = reader.optional<Timestamp>(*document, "recoveredAt")};
    if (reader.has(*document, "apps"))
        manifest.apps = readApps(reader, *document);
    else
        readSingleApp(reader, *document, manifest);
    checkPlaces(reader, manifest.quarantineRoot, manifest.entries);
    return reader.finish(std::move(manifest));
}

tl::expected<RemovalJournal, DocumentError> decodeJournal(std::string_view text) {
    const auto document = parseJson(text, maxDocumentBytes);
    if (!document)
        return tl::unexpected(DocumentError{DocumentError::Kind::malformed, "not a JSON document"});
    Reader reader;
    RemovalJournal journal{.version = reader.required<int>(*document, "version"),
                           .createdAt = reader.required<Timestamp>(*document, "createdAt"),
                           .quarantineRoot = reader.required<Path>(*document, "quarantineRoot"),
                           .apps = readApps(reader, *document),
                           .planned = readEntries(reader, *document, "planned")};
    checkPlaces(reader, journal.quarantineRoot, journal.planned);
    return reader.finish(std::move(journal));
}

} // namespace tidwen

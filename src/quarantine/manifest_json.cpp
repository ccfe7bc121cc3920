#include "base/json.h"
#include "base/json_reader.h"
#include "base/path.h"
#include "base/path_key.h"
#include "base/timestamp.h"
#include "quarantine/manifest.h"
#include "quarantine/quarantine_layout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/core.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

using nlohmann::json;

/// A member of an object, and where to store its value.
template<class T>
struct Field {
    std::string_view key;
    T& into;
    bool isRequired;
    bool isFound = false;
};

template<class T>
Field<T> required(std::string_view key, T& into) {
    return {key, into, true};
}

/// Optional or null.
template<class T>
Field<T> optional(std::string_view key, T& into) {
    return {key, into, false};
}

/// Required in the older format with one application; otherwise of any type.
struct OlderText {
    std::string text;
    bool isText = false;
};

/// Reads typed values from a JSON document and remembers the first error, so that a document is read
/// sequentially and the error checked once at the end.
class Reader {
  public:
    explicit Reader(std::string_view text) : json_(text.size() > maxDocumentBytes ? "" : text) {}

    /// Reads the next value, which must be an object, into the fields; other members are skipped.
    template<class... Fields>
    void record(Fields... fields) {
        if (json_.next() == JsonReader::Kind::object)
            json_.object([&](std::string_view key) {
                if (!(takeIf(key, fields) || ...)) json_.skip();
            });
        else
            json_.skip();
        (checkFound(fields), ...);
    }

    void fail(std::string_view what, std::string_view key) {
        if (fault_.empty()) fault_ = fmt::format("{} {}", what, key);
    }

    template<class Document>
    tl::expected<Document, DocumentError> finish(Document document) {
        if (!json_.finish()) fault_ = "not a JSON document";
        if (fault_.empty()) return document;
        return tl::unexpected(DocumentError{DocumentError::Kind::malformed, fault_});
    }

  private:
    using Kind = JsonReader::Kind;

    template<class T>
    bool takeIf(std::string_view key, Field<T>& field) {
        if (key != field.key) return false;
        field.isFound = true;
        const bool isAbsent = !field.isRequired && json_.next() == Kind::null;
        if (!isAbsent && !take(field.into)) fail("wrong type of key", key);
        return true;
    }

    template<class T>
    void checkFound(const Field<T>& field) {
        if (field.isRequired && !field.isFound) fail("missing key", field.key);
    }

    /// Whether the next value is of the kind; skips it otherwise.
    bool isNext(Kind kind) {
        const bool isIt = json_.next() == kind;
        if (!isIt) json_.skip();
        return isIt;
    }

    // Each reads the next value; false if it has another type.

    bool take(std::string& into) {
        if (!isNext(Kind::string)) return false;
        into = json_.string();
        return true;
    }

    bool take(OlderText& into) {
        into.isText = take(into.text);
        return true;
    }

    bool take(bool& into) {
        if (!isNext(Kind::boolean)) return false;
        into = json_.boolean();
        return true;
    }

    bool take(int& into) {
        if (!isNext(Kind::number)) return false;
        return std::visit([&](auto number) { return narrow(number, into); }, json_.number());
    }

    bool take(Timestamp& into) {
        if (!isNext(Kind::string)) return false;
        const auto moment = parseIso8601(json_.string());
        if (moment) into = *moment;
        return moment.has_value();
    }

    bool take(Path& into) {
        if (!isNext(Kind::string)) return false;
        into = Path(std::string(json_.string()));
        return true;
    }

    bool take(ManifestEntryKind& into) {
        if (!isNext(Kind::string)) return false;
        const auto name = json_.string();
        into = name == "move" ? ManifestEntryKind::move : ManifestEntryKind::bootout;
        return name == "move" || name == "bootout";
    }

    template<class T>
    bool take(std::optional<T>& into) {
        return take(into.emplace());
    }

    template<class T>
    bool take(std::vector<T>& into) {
        if (!isNext(Kind::array)) return false;
        std::size_t count = 0;
        json_.array([&] {
            if (count++ < maxManifestEntries)
                takeRecord(into.emplace_back());
            else
                json_.skip();
        });
        return count <= maxManifestEntries;
    }

    void takeRecord(std::string& text) {
        if (!take(text)) fail("not a text in", "an array");
    }

    void takeRecord(AppRecord& app) {
        record(required("name", app.name), required("bundleID", app.bundleID));
    }

    void takeRecord(ManifestEntry& entry) {
        record(optional("bundleID", entry.bundleID), optional("destination", entry.destination),
               optional("isSystemDomain", entry.isSystemDomain), required("kind", entry.kind),
               optional("launchLabel", entry.launchLabel), required("operationID", entry.operationID),
               optional("plistPath", entry.plistPath), required("requiresRoot", entry.requiresRoot),
               optional("sharedWith", entry.sharedWith), required("source", entry.source));
    }

    template<class Number>
    static bool narrow(Number number, int& into) {
        // Another program may have rewritten the document, and some write all numbers as floating point.
        if constexpr (std::is_floating_point_v<Number>) {
            if (!(std::abs(number) <= std::numeric_limits<int>::max()) || number != std::trunc(number))
                return false;
        } else if (!std::in_range<int>(number)) {
            return false;
        }
        into = static_cast<int>(number);
        return true;
    }

    JsonReader json_;
    std::string fault_;
};

/// Four times the limit of macOS's own calls.
constexpr std::size_t maxPathBytes = 4096;

/// Whether a component is "." or "..". Other names may start with a dot, like ".Trash".
bool hasDots(std::string_view path) {
    for (auto at = path.find("/."); at != path.npos; at = path.find("/.", at + 1)) {
        auto rest = path.substr(at + 2);
        if (rest.starts_with('.')) rest.remove_prefix(1);
        if (rest.empty() || rest.front() == '/') return true;
    }
    return false;
}

/// Without a NUL, at which system calls would stop reading.
bool isPathText(std::string_view text) {
    return text.size() <= maxPathBytes && text.find('\0') == text.npos;
}

/// Absolute, without "." or "..".
bool isPlainAbsolutePath(std::string_view text) {
    return text.starts_with('/') && isPathText(text) && !hasDots(text);
}

/// Recognizes paths below the quarantine folder, other than run documents.
class QuarantinedItems {
  public:
    explicit QuarantinedItems(const Path& root)
        : folder_(pathKey(root)),
          documents_{folder_ / manifestFileName, folder_ / journalFileName, folder_ / reserveFileName} {}

    bool contain(const std::string& text) const {
        if (!isPlainAbsolutePath(text)) return false;
        const Path item = pathKey(Path(text));
        return item != folder_ && item.isWithin(folder_)
               && std::ranges::find(documents_, item) == documents_.end();
    }

  private:
    Path folder_;
    std::array<Path, 3> documents_;
};

/// Applications removed together may share an item, which can come back between their moves.
constexpr int mostMovesOfOneItem = 100;

/// Of a manifest, an entry whose source says no place is kept: an undo refuses it by the safety policy and
/// puts the others back. A journal was written before anything moved, and says every place in full.
enum class SourceRule { ofManifest, ofJournal };

void checkPlaces(Reader& reader, const Path& root, const std::vector<ManifestEntry>& entries,
                 SourceRule sources) {
    const auto isSource = sources == SourceRule::ofManifest ? isPathText : isPlainAbsolutePath;
    if (!isPlainAbsolutePath(root.string()) || root.isRoot()) reader.fail("not a folder:", "quarantineRoot");
    const QuarantinedItems items(root);
    std::unordered_map<std::string_view, int> moves; ///< by source
    std::unordered_set<std::string_view> destinations;
    for (const auto& entry : entries) {
        if (entry.kind == ManifestEntryKind::move && ++moves[entry.source] > mostMovesOfOneItem)
            reader.fail("too often named:", "source");
        if (entry.destination && !destinations.insert(*entry.destination).second)
            reader.fail("named twice:", "destination");
        if (entry.kind == ManifestEntryKind::move && !isSource(entry.source))
            reader.fail("not a path:", "source");
        if (entry.destination && !items.contain(*entry.destination))
            reader.fail("outside its folder:", "destination");
        if (entry.plistPath && !isPlainAbsolutePath(*entry.plistPath))
            reader.fail("not an absolute path:", "plistPath");
    }
}

/// Reads a manifest of one application, the format before a run could have several.
void takeSingleApp(Reader& reader, OlderText name, OlderText bundleID, Manifest& manifest) {
    if (!name.isText) reader.fail("wrong type of key", "appName");
    if (!bundleID.isText) reader.fail("wrong type of key", "bundleID");
    for (auto& entry : manifest.entries)
        if (entry.bundleID.empty()) entry.bundleID = bundleID.text;
    manifest.apps = {{std::move(name.text), std::move(bundleID.text)}};
}

/// A separate array in the file, so that `entries` contains only items in quarantine.
void takeMissing(Reader& reader, std::vector<ManifestEntry> missing, Manifest& manifest) {
    if (manifest.entries.size() + missing.size() > maxManifestEntries) reader.fail("too many in", "missing");
    manifest.entries.reserve(manifest.entries.size() + missing.size());
    std::unordered_set<std::string> moved;
    for (const auto* moves : {&manifest.entries, &missing})
        for (const auto& entry : *moves)
            if (entry.kind == ManifestEntryKind::move) moved.insert(entry.source);
    for (auto& entry : missing) {
        if (entry.kind != ManifestEntryKind::move && (!entry.plistPath || !moved.contains(*entry.plistPath)))
            reader.fail("a job without its file in", "missing");
        entry.isMissing = true;
        manifest.entries.push_back(std::move(entry));
    }
}

json toJson(const std::vector<AppRecord>& apps) {
    json all = json::array();
    for (const auto& app : apps)
        all.push_back({{"name", app.name}, {"bundleID", app.bundleID}});
    return all;
}

/// The missing entries of a manifest, or the others.
json toJson(const std::vector<ManifestEntry>& entries, bool areMissing = false) {
    json all = json::array();
    for (const auto& entry : entries) {
        if (entry.isMissing != areMissing) continue;
        json one{{"operationID", entry.operationID},
                 {"kind", entry.kind == ManifestEntryKind::move ? "move" : "bootout"},
                 {"source", entry.source},
                 {"requiresRoot", entry.requiresRoot},
                 {"bundleID", entry.bundleID}};
        if (entry.destination) one["destination"] = *entry.destination;
        if (entry.launchLabel) one["launchLabel"] = *entry.launchLabel;
        if (entry.isSystemDomain) one["isSystemDomain"] = *entry.isSystemDomain;
        if (entry.plistPath) one["plistPath"] = *entry.plistPath;
        if (!entry.sharedWith.empty()) one["sharedWith"] = entry.sharedWith;
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
    if (auto missing = toJson(manifest.entries, true); !missing.empty())
        document["missing"] = std::move(missing);
    if (manifest.irreversible) document["irreversible"] = *manifest.irreversible;
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
    Reader reader(text);
    Manifest manifest;
    std::optional<std::vector<AppRecord>> apps;
    std::optional<OlderText> name, bundleID;
    std::vector<ManifestEntry> missing;
    reader.record(required("version", manifest.version), required("createdAt", manifest.createdAt),
                  required("quarantineRoot", manifest.quarantineRoot), optional("apps", apps),
                  required("entries", manifest.entries), optional("missing", missing),
                  optional("irreversible", manifest.irreversible),
                  optional("recoveredAt", manifest.recoveredAt), optional("appName", name),
                  optional("bundleID", bundleID));
    takeMissing(reader, std::move(missing), manifest);
    if (apps)
        manifest.apps = std::move(*apps);
    else
        takeSingleApp(reader, name.value_or(OlderText{"App", true}), bundleID.value_or(OlderText{"", true}),
                      manifest);
    checkPlaces(reader, manifest.quarantineRoot, manifest.entries, SourceRule::ofManifest);
    return reader.finish(std::move(manifest));
}

tl::expected<RemovalJournal, DocumentError> decodeJournal(std::string_view text) {
    Reader reader(text);
    RemovalJournal journal;
    reader.record(required("version", journal.version), required("createdAt", journal.createdAt),
                  required("quarantineRoot", journal.quarantineRoot), required("apps", journal.apps),
                  required("planned", journal.planned));
    checkPlaces(reader, journal.quarantineRoot, journal.planned, SourceRule::ofJournal);
    return reader.finish(std::move(journal));
}

} // namespace tidwen

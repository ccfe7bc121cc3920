#pragma once

#include "base/path.h"
#include "base/timestamp.h"
#include "quarantine/manifest.h"

#include <fmt/core.h>
#include <optional>
#include <string>

namespace tidwen::test {

// Manifest entries as a removal writes them, for tests.

inline const Timestamp runDate = *parseIso8601("2026-11-14T17:26:00Z");

/// The move of `source` into the numbered folder of a quarantine folder.
inline ManifestEntry moveEntry(int id, const Path& root, const std::string& source,
                               bool requiresRoot = false) {
    const auto place = root / fmt::format("{:04}", id) / Path(source).lastComponent();
    return {.operationID = id,
            .source = source,
            .destination = place.string(),
            .requiresRoot = requiresRoot,
            .bundleID = "com.example.notes"};
}

inline ManifestEntry bootoutEntry(int id, const std::string& label, bool isSystemDomain,
                                  std::optional<std::string> plist) {
    return {.operationID = id,
            .kind = ManifestEntryKind::bootout,
            .source = label,
            .launchLabel = label,
            .isSystemDomain = isSystemDomain,
            .requiresRoot = isSystemDomain,
            .bundleID = "com.example.notes",
            .plistPath = std::move(plist)};
}

} // namespace tidwen::test

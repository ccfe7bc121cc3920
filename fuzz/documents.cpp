// Manifests, journals, and requests from other processes: what is accepted can be written, reads back equal,
// and names no place outside its quarantine folder. Where an item of a manifest goes back to is judged by the
// undo.

#include "base/path.h"
#include "base/path_key.h"
#include "base/text.h"
#include "quarantine/manifest.h"
#include "system/request_inbox.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tidwen;

void require(bool condition) {
    if (!condition) std::abort();
}

void requireSafe(const Path& root, const std::vector<ManifestEntry>& entries) {
    for (const auto& entry : entries) {
        if (entry.kind != ManifestEntryKind::move || !entry.destination) continue;
        const Path destination(*entry.destination);
        // In any letter case, because a Mac's disk finds the same item.
        require(!destination.hasTraversal() && pathKey(destination).isWithin(pathKey(root)));
        require(pathKey(destination) != pathKey(root));
        require(isValidUtf8(entry.source) && isValidUtf8(*entry.destination));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view json(reinterpret_cast<const char*>(data), size);
    if (const auto manifest = decodeManifest(json)) {
        requireSafe(manifest->quarantineRoot, manifest->entries);
        for (const auto& entry : manifest->entries)
            require(entry.source.find('\0') == std::string::npos);
        const auto again = decodeManifest(encode(*manifest));
        require(again && again->entries == manifest->entries && again->apps == manifest->apps);
    }
    if (const auto journal = decodeJournal(json)) {
        requireSafe(journal->quarantineRoot, journal->planned);
        for (const auto& entry : journal->planned)
            if (entry.kind == ManifestEntryKind::move)
                require(Path(entry.source).isAbsolute() && !Path(entry.source).hasTraversal());
        const auto again = decodeJournal(encode(*journal));
        require(again && *again == *journal);
    }
    if (const auto request = decodeRequest(json)) require(decodeRequest(encode(*request)) == request);
    return 0;
}

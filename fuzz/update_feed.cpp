// Update feeds: what is read respects the limits, and no release older than the running version is offered.

#include "services/update_feed.h"
#include "services/version_number.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tidwen;
    const auto releases = parseUpdateFeed({reinterpret_cast<const char*>(data), size}, "com.corvella.tidwen");
    if (!releases) return 0;
    const VersionNumber running{{1, 5}, {}};
    for (const auto& release : *releases) {
        if (VersionNumber::parse(release.version) != release.number) std::abort();
        if (!isPlainHttpsAddress(release.url) || release.minimumSystem.empty()) std::abort();
        if (compare(release.number, running) != -compare(running, release.number)) std::abort();
        const auto answer = newestRelease(*releases, running, {"macOS", release.number});
        if (answer.release && compare(answer.release->number, running) <= 0) std::abort();
    }
    return 0;
}

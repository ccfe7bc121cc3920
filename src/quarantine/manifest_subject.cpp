#include "quarantine/manifest_subject.h"

#include "base/language.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace tidwen {

std::string subjectText(const Manifest& manifest, const Texts& texts) {
    const auto& apps = manifest.apps;
    if (apps.size() <= mostNamedApps) {
        std::vector<std::string> names;
        std::ranges::transform(apps, std::back_inserter(names), &AppRecord::name);
        return formatList(names, texts.language());
    }
    std::size_t moved = 0;
    bool isOfLeftovers = true;
    for (const auto& entry : manifest.entries) {
        if (entry.kind != ManifestEntryKind::move) continue;
        ++moved;
        if (entry.source.ends_with(".app")) isOfLeftovers = false;
    }
    return isOfLeftovers ? texts.text("confirm.subject.leftovers %lld", {std::to_string(moved)})
                         : texts.text("report.subject.apps %lld", {std::to_string(apps.size())});
}

} // namespace tidwen

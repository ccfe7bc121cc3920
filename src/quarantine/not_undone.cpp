#include "quarantine/not_undone.h"

#include <algorithm>

namespace tidwen {

NotUndone notUndone(const Manifest& manifest) {
    if (!manifest.irreversible) {
        const bool isOfApplications =
            std::ranges::any_of(manifest.apps, [](const auto& app) { return !app.bundleID.empty(); });
        return isOfApplications ? NotUndone::unknown : NotUndone::nothing;
    }
    const auto& kinds = *manifest.irreversible;
    if (kinds.empty()) return NotUndone::nothing;
    const bool isOnlyPermissions =
        std::ranges::all_of(kinds, [](const auto& kind) { return kind == "resetPermissions"; });
    return isOnlyPermissions ? NotUndone::permissions : NotUndone::passwords;
}

std::optional<Message> describe(NotUndone lost) {
    switch (lost) {
    case NotUndone::nothing:
        break;
    case NotUndone::permissions:
        return Message{"report.undo.permissions"};
    case NotUndone::passwords:
        return Message{"report.undo.passwords"};
    case NotUndone::unknown:
        return Message{"report.undo.permanent"};
    }
    return std::nullopt;
}

} // namespace tidwen

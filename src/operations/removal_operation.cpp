#include "operations/removal_operation.h"

#include <array>

namespace tidwen {

std::string_view name(RemovalMode mode) {
    return mode == RemovalMode::uninstall ? "uninstall" : "reset";
}

std::string_view kindName(const RemovalOperation::Kind& kind) {
    // In the order of the variant's alternatives.
    static constexpr std::array<std::string_view, std::variant_size_v<RemovalOperation::Kind>> names = {
        "quitApplication",    "resetPermissions", "bootout",         "bootstrap", "move",
        "deleteKeychainItem", "unregisterApp",    "flushPreferences"};
    return names[kind.index()];
}

} // namespace tidwen

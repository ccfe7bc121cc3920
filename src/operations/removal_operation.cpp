#include "operations/removal_operation.h"

#include "base/texts.h"

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

std::string displayName(const RemovalOperation& operation, const Texts& texts) {
    const bool namesNoItem = std::holds_alternative<operation::UnregisterApp>(operation.kind)
                             || std::holds_alternative<operation::FlushPreferences>(operation.kind);
    return namesNoItem ? texts.text("operation." + std::string(kindName(operation.kind)))
                       : operation.displayName;
}

} // namespace tidwen

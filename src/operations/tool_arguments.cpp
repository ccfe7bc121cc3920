#include "operations/tool_arguments.h"

#include "base/text.h"

#include <variant>

namespace tidwen::toolArguments {

namespace {

constexpr std::string_view zeroAndReturn("\0\r", 2);
constexpr std::string_view zeroAndLineEnds("\0\r\n", 3);

bool isWord(std::string_view text) {
    return !text.empty() && !text.starts_with('-') && text.find_first_of(zeroAndLineEnds) == text.npos
           && isValidUtf8(text);
}

struct Judge {
    bool operator()(const operation::QuitApplication& quit) const { return isIdentifier(quit.bundleID); }
    bool operator()(const operation::ResetPermissions& reset) const { return isIdentifier(reset.bundleID); }
    bool operator()(const operation::Bootout& bootout) const { return isLabel(bootout.label); }
    bool operator()(const operation::Bootstrap& bootstrap) const { return isBatchPath(bootstrap.plist); }
    bool operator()(const operation::Move& move) const {
        return isBatchPath(move.source) && isBatchPath(move.destination);
    }
    bool operator()(const operation::DeleteKeychainItem& item) const { return isService(item.service); }
    bool operator()(const operation::UnregisterApp& app) const { return isBatchPath(app.bundleURL); }
    bool operator()(const operation::FlushPreferences&) const { return true; }
};

} // namespace

bool isIdentifier(std::string_view text) {
    return isWord(text);
}

bool isLabel(std::string_view text) {
    return isWord(text) && text.find('/') == text.npos;
}

bool isService(std::string_view text) {
    return !text.empty() && text.find_first_of(zeroAndReturn) == text.npos && isValidUtf8(text);
}

bool isBatchPath(const Path& path) {
    return path.isAbsolute() && path.string().find_first_of(zeroAndReturn) == std::string::npos
           && isValidUtf8(path.string());
}

bool areSafe(const RemovalOperation::Kind& kind) {
    return std::visit(Judge{}, kind);
}

std::string launchdDomain(bool isSystemDomain, std::uint32_t userID) {
    return isSystemDomain ? "system" : "gui/" + std::to_string(userID);
}

} // namespace tidwen::toolArguments

#include "operations/admin_batch.h"

#include "base/shell_word.h"
#include "operations/removal_operation.h"
#include "operations/tool_arguments.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <variant>

namespace tidwen::adminBatch {

namespace {

using namespace fmt::literals;

std::string replacedAll(std::string_view text, char wanted, std::string_view replacement) {
    std::string result;
    result.reserve(text.size() + 16);
    for (const char c : text) {
        if (c == wanted)
            result += replacement;
        else
            result += c;
    }
    return result;
}

/// The script line of each kind. Every line ends by echoing its result, so that no failure stops the batch.
/// Single quotes around an echo without expansion, double quotes where the shell inserts the status.
struct LineWriter {
    int id;
    std::uint32_t userID;

    std::string done() const { return fmt::format("echo 'OP {} OK'", id); }

    // Nothing to do as root: an application is quit before the batch and registered in the user's own
    // database.
    std::string operator()(const operation::QuitApplication&) const { return done(); }
    std::string operator()(const operation::UnregisterApp&) const { return done(); }

    std::string operator()(const operation::ResetPermissions& reset) const {
        return fmt::format(R"(/usr/bin/tccutil reset All {bundleID} >/dev/null 2>&1 && echo 'OP {n} OK')"
                           R"( || echo "OP {n} FAIL $?")",
                           "n"_a = id, "bundleID"_a = shellWord(reset.bundleID));
    }

    /// 3: no such process, 113: no such service. A job that is no longer loaded is the desired state.
    std::string operator()(const operation::Bootout& bootout) const {
        return fmt::format(R"(/bin/launchctl bootout {domain}/{label} >/dev/null 2>&1; c=$?;)"
                           R"( if [ $c -eq 0 ] || [ $c -eq 3 ] || [ $c -eq 113 ];)"
                           R"( then echo 'OP {n} OK'; else echo "OP {n} FAIL $c"; fi)",
                           "n"_a = id,
                           "domain"_a = toolArguments::launchdDomain(bootout.isSystemDomain, userID),
                           "label"_a = shellWord(bootout.label));
    }

    /// 17: already loaded. A job that was disabled stays disabled, as before.
    std::string operator()(const operation::Bootstrap& bootstrap) const {
        return fmt::format(R"(/bin/launchctl bootstrap {domain} {plist} >/dev/null 2>&1; c=$?;)"
                           R"( l=$(/usr/libexec/PlistBuddy -c 'Print :Label' {plist} 2>/dev/null);)"
                           R"( if [ $c -eq 0 ] || [ $c -eq 17 ] || {{ [ -n "$l" ])"
                           R"( && /bin/launchctl print-disabled {domain})"
                           R"( | /usr/bin/grep -qF "\"$l\" => disabled"; }};)"
                           R"( then echo 'OP {n} OK'; else echo "OP {n} FAIL $c"; fi)",
                           "n"_a = id,
                           "domain"_a = toolArguments::launchdDomain(bootstrap.isSystemDomain, userID),
                           "plist"_a = shellWord(bootstrap.plist.string()));
    }

    /// -e follows links, so -L detects a dangling one. mv alone would replace a file or move into a folder.
    std::string operator()(const operation::Move& move) const {
        return fmt::format(R"(if /bin/mkdir -p {parent}; then if [ ! -e {to} ] && [ ! -L {to} ];)"
                           R"( then /bin/mv {from} {to} && echo 'OP {n} OK' || echo "OP {n} FAIL $?";)"
                           R"( else echo 'OP {n} FAIL occupied'; fi; else echo "OP {n} FAIL $?"; fi)",
                           "n"_a = id, "parent"_a = shellWord(move.destination.parent().string()),
                           "from"_a = shellWord(move.source.string()),
                           "to"_a = shellWord(move.destination.string()));
    }

    /// One call deletes one item, hence the loops; 1 means that there was none.
    std::string operator()(const operation::DeleteKeychainItem& item) const {
        return fmt::format(R"(n=0; while /usr/bin/security delete-generic-password -s {service}{keychain})"
                           R"( >/dev/null 2>&1; do n=$((n+1)); done;)"
                           R"( while /usr/bin/security delete-internet-password -s {service}{keychain})"
                           R"( >/dev/null 2>&1; do n=$((n+1)); done;)"
                           R"( if [ $n -gt 0 ]; then echo 'OP {n} OK'; else echo "OP {n} FAIL 1"; fi)",
                           "n"_a = id, "service"_a = shellWord(item.service),
                           "keychain"_a = item.isSystemKeychain ? " /Library/Keychains/System.keychain" : "");
    }

    /// 1: root has no such process, so nothing is cached.
    std::string operator()(const operation::FlushPreferences&) const {
        return fmt::format(
            R"(/usr/bin/killall -u root cfprefsd >/dev/null 2>&1; c=$?;)"
            R"( if [ $c -eq 0 ] || [ $c -eq 1 ]; then echo 'OP {n} OK'; else echo "OP {n} FAIL $c"; fi)",
            "n"_a = id);
    }
};

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> parts;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const auto end = std::min(text.find_first_of(separators, begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

/// The result in a line; nullopt when it is not a result line.
std::optional<OperationResult> resultOf(std::string_view line) {
    const auto words = split(line, " ");
    if (words.size() < 3 || words[0] != "OP") return std::nullopt;
    int id = 0;
    const auto [end, fault] = std::from_chars(words[1].data(), words[1].data() + words[1].size(), id);
    if (fault != std::errc{} || end != words[1].data() + words[1].size()) return std::nullopt;

    if (words[2] == "OK") return OperationResult::success(id);
    if (words[2] != "FAIL") return std::nullopt;
    if (words.size() == 3 || words[3].empty()) return OperationResult::failure(id, {"failure.unknown"});
    if (words[3] == "occupied") return OperationResult::failure(id, {"failure.destinationOccupied"});
    return OperationResult::failure(id, {"failure.exit %@", {std::string(words[3])}});
}

} // namespace

std::string line(const RemovalOperation& operation, std::uint32_t userID) {
    return std::visit(LineWriter{operation.id, userID}, operation.kind);
}

std::string script(const std::vector<RemovalOperation>& operations, std::uint32_t userID) {
    std::string text = "#!/bin/sh";
    for (const auto& operation : operations)
        text += "\n" + line(operation, userID);
    return text;
}

std::vector<OperationResult> parse(std::string_view standardOutput,
                                   const std::vector<RemovalOperation>& operations) {
    std::map<int, OperationResult> stated;
    for (const auto textLine : split(standardOutput, "\r\n"))
        if (auto result = resultOf(textLine))
            stated.insert_or_assign(result->operationID, std::move(*result));

    std::vector<OperationResult> results;
    results.reserve(operations.size());
    for (const auto& operation : operations) {
        const auto found = stated.find(operation.id);
        results.push_back(found != stated.end()
                              ? found->second
                              : OperationResult::failure(operation.id, {"failure.noResult"}));
    }
    return results;
}

std::string appleScript(std::string_view script) {
    return R"(do shell script ")" + replacedAll(replacedAll(script, '\\', R"(\\)"), '"', R"(\")")
           + R"(" with administrator privileges)";
}

} // namespace tidwen::adminBatch

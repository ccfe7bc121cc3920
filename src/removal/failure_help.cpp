#include "removal/failure_help.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tidwen {

namespace {

using Help = std::pair<std::string_view, const char*>;

constexpr std::array helpByReason = {
    Help{"failure.adminCancelled", "failure.help.password"},
    Help{"failure.appDidNotQuit", "failure.help.quit"},
    Help{"failure.file.busy", "failure.help.quit"},
    Help{"failure.file.denied", "failure.help.access"},
    Help{"failure.file.noSpace", "failure.help.space"},
    Help{"failure.keychainRefused", "failure.help.keychain"},
    Help{"failure.launchctlUnavailable", "failure.help.again"},
    Help{"failure.noResult", "failure.help.again"},
    Help{"failure.tccutilFailed", "failure.help.privacy"},
    Help{"failure.tccutilUnavailable", "failure.help.privacy"},
    Help{"failure.timedOut", "failure.help.again"},
    Help{"failure.toolUnavailable", "failure.help.again"},
};

} // namespace

std::optional<Message> helpFor(const Message& reason) {
    const auto found = std::ranges::find(helpByReason, reason.key, &Help::first);
    return found == helpByReason.end() ? std::nullopt : std::optional(Message{found->second});
}

} // namespace tidwen

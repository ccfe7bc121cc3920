#include "removal/failure_help.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tidwen {

namespace {

using Help = std::pair<std::string_view, const char*>;

constexpr std::array helpByReason = {
    Help{"failure.adminCancelled", "report.help.password"},
    Help{"failure.appDidNotQuit", "report.help.quit"},
    Help{"failure.file.busy", "report.help.quit"},
    Help{"failure.file.denied", "report.help.access"},
    Help{"failure.file.noSpace", "report.help.space"},
    Help{"failure.keychainRefused", "report.help.keychain"},
    Help{"failure.launchctlUnavailable", "report.help.again"},
    Help{"failure.noResult", "report.help.again"},
    Help{"failure.tccutilFailed", "report.help.privacy"},
    Help{"failure.tccutilUnavailable", "report.help.privacy"},
    Help{"failure.timedOut", "report.help.again"},
    Help{"failure.toolUnavailable", "report.help.again"},
};

} // namespace

std::optional<Message> helpFor(const Message& reason) {
    const auto found = std::ranges::find(helpByReason, reason.key, &Help::first);
    return found == helpByReason.end() ? std::nullopt : std::optional(Message{found->second});
}

} // namespace tidwen

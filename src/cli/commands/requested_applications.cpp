#include "cli/commands/requested_applications.h"

#include "base/path.h"
#include "cli/console.h"
#include "cli/intake.h"
#include "cli/json/services.h"
#include "program/host_paths.h"
#include "program/mac.h"
#include "program/resources.h"
#include "scan/applications/app_target.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/other_applications.h"
#include "system/request_inbox.h"

#include <optional>
#include <string>

namespace tidwen {

RequestInbox requestInbox(const CommandContext& context, const Mac& mac) {
    return requestInbox(mac, findOwnBundle(context.arguments.program.c_str()));
}

JudgedRequest judgeRequest(const std::vector<Path>& paths, const CommandContext& context, const Mac& mac) {
    std::vector<std::string> words;
    words.reserve(paths.size());
    for (const auto& path : paths)
        words.push_back(path.string());
    const auto& system = mac.system;
    const std::vector<InstalledIdentity> none; // requests contain paths, never names
    const ApplicationFinder finder(system.files, none, HostPaths(std::nullopt));
    auto intake = loadTargets(words, finder, AppTargetLoader(system.files, system.signatures),
                              readProtection(system.defaults));
    for (const auto& failure : intake.failures)
        context.report(failure);
    return {std::move(intake.targets), !intake.failures.empty()};
}

void reportRefused(const RequestInbox::Drained& requests, const CommandContext& context) {
    for (const auto& refusal : requests.refusals())
        context.console.error(context.texts.text(refusal));
}

RequestedApplications::RequestedApplications(const CommandContext& context, Session& session)
    : context_(context),
      mac_(session.mac()),
      watcher_(
          session.models().inboxWatcher(findOwnBundle(context.arguments.program.c_str()),
                                        [this](const RequestInbox::Drained& requests) { show(requests); })) {}

void RequestedApplications::show(const RequestInbox::Drained& requests) const {
    reportRefused(requests, context_);
    for (const auto& target : judgeRequest(requests.paths, context_, mac_).targets) {
        const auto& url = target.bundleURL.string();
        if (context_.arguments.json) {
            context_.console.document(json::requestLine(target));
        } else {
            context_.console.line({{context_.text("cli.requests.asked %@", {target.name}), Style::strong}});
            context_.offer(context_.commandLine({"remove", url}));
        }
    }
    (void)context_.console.finish();
}

} // namespace tidwen

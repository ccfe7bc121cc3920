#include "system/permissions_sheet.h"

#include "base/background_step.h"
#include "scan/applications/app_target.h"

#include <tl/expected.hpp>

namespace tidwen {

PermissionsSheet::PermissionsSheet(Ports ports, AppTarget app) : ports_(ports), app_(std::move(app)) {
    following_.push_back(audit.observe([this](const auto&) { show(); }));
    following_.push_back(revoking.observe([this](const auto&) { show(); }));
}

void PermissionsSheet::show() {
    std::vector<PermissionRow> shown;
    if (audit.get())
        for (const auto& grant : audit.get()->grants)
            shown.push_back({grant, revoking.get().contains(grant.service)});
    rows.assign(std::move(shown));
}

void PermissionsSheet::load(std::function<void()> done) {
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&auditor = ports_.auditor, app = app_] { return auditor.audit(app); },
        [done = std::move(done)](PermissionsSheet& self, PermissionAudit::Result found) {
            self.audit.set(std::move(found));
            if (done) done();
        });
}

void PermissionsSheet::revoke(const PermissionGrant& grant, std::function<void()> done) {
    auto busy = revoking.get();
    if (!busy.insert(grant.service).second) {
        if (done) ports_.main.post(std::move(done));
        return;
    }
    revoking.set(std::move(busy));
    using Outcome = tl::expected<void, PermissionRevokerError>;
    inBackground(
        *this, alive_, ports_.background, ports_.main,
        [&revoker = ports_.revoker, grant, bundleID = app_.bundleID] {
            return revoker.revoke(grant, bundleID);
        },
        [service = grant.service, done = std::move(done)](PermissionsSheet& self, const Outcome& outcome) {
            const auto reason = outcome ? std::nullopt : outcome.error().describe();
            if (reason) self.errorText.set(*reason);
            self.load([&self, service, done] {
                auto left = self.revoking.get();
                left.erase(service);
                self.revoking.set(std::move(left));
                if (done) done();
            });
        });
}

std::string PermissionsSheet::detail(const PermissionGrant& grant, const Texts& texts) {
    std::string text;
    const auto add = [&](const char* key) { text += (text.empty() ? "" : " · ") + texts.text(key); };
    if (grant.state.kind == PermissionGrant::State::Kind::limited) add("permissions.sheet.limited");
    if (grant.isPathClient)
        add("permissions.sheet.pathClient");
    else if (grant.scope == PermissionGrant::Scope::system)
        add("permissions.sheet.system");
    return text;
}

} // namespace tidwen

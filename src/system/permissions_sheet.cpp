#include "system/permissions_sheet.h"

namespace tidwen {

void PermissionsSheet::load(std::function<void()> done) {
    ports_.background.post(
        [this, ports = ports_, app = app_, alive = std::weak_ptr(alive_), done = std::move(done)]() mutable {
            auto result = ports.auditor.audit(app);
            ports.main.post([this, alive, result = std::move(result), done = std::move(done)]() mutable {
                if (alive.expired()) return;
                audit.set(std::move(result));
                if (done) done();
            });
        });
}

void PermissionsSheet::revoke(const PermissionGrant& grant, std::function<void()> done) {
    auto busy = revoking.get();
    if (!busy.insert(grant.service).second) {
        if (done) ports_.main.post(std::move(done));
        return;
    }
    revoking.set(std::move(busy));
    ports_.background.post([this, ports = ports_, grant, bundleID = app_.bundleID,
                            alive = std::weak_ptr(alive_), done = std::move(done)]() mutable {
        auto outcome = ports.revoker.revoke(grant, bundleID);
        ports.main.post([this, alive, service = grant.service, outcome = std::move(outcome),
                         done = std::move(done)]() mutable {
            if (alive.expired()) return;
            const auto reason = outcome ? std::nullopt : outcome.error().describe();
            if (reason) errorText.set(ports_.texts.text(*reason));
            load([this, service = std::move(service), done = std::move(done)] {
                auto left = revoking.get();
                left.erase(service);
                revoking.set(std::move(left));
                if (done) done();
            });
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

#include "base/texts.h"
#include "operations/permission_revoker.h"
#include "scan/applications/app_target.h"
#include "scan/permissions/permission_audit.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/unprivileged.h"
#include "system/permissions_model.h"
#include "system/permissions_sheet.h"

#include <optional>
#include <string>
#include <sys/stat.h>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {
namespace {

TEST(FullDiskAccess, IsToldByWhatOpens) {
    using Status = FullDiskAccessProbe::Status;
    const std::string database = "/Users/alice/Library/Application Support/com.apple.TCC/TCC.db";
    const std::string bookmarks = "/Users/alice/Library/Safari/Bookmarks.plist";
    const struct {
        std::vector<std::string> present;
        std::string refused; ///< one of the existing ones
        Status status;
    } cases[] = {
        {{}, "", Status::indeterminate},          {{database}, "", Status::granted},
        {{bookmarks}, "", Status::granted},       {{database, bookmarks}, database, Status::denied},
        {{bookmarks}, bookmarks, Status::denied},
    };
    for (const auto& c : cases) {
        const test::TemporaryVolume volume;
        for (const auto& file : c.present)
            volume.write(file, "x");
        if (!c.refused.empty()) ::chmod(volume.host(c.refused).c_str(), 0);
        test::giveToUnprivileged(volume.hostRoot());
        test::asUnprivileged([&] {
            test::RecordingLog log;
            test::SteppedQueues queues;
            PermissionsModel model({volume.files(), queues.main, queues.background, log}, test::alice(),
                                   [] { return true; });
            model.refresh();
            queues.settle();
            EXPECT_EQ(model.fullDiskAccess.get(), c.status) << c.refused;
            auto user = test::alice();
            EXPECT_FALSE(whyNothingMoves(user, volume.files())) << "a volume has no privacy settings";
            user.isOnRunningMac = true;
            EXPECT_EQ(whyNothingMoves(user, volume.files()).has_value(), c.status == Status::denied);
            EXPECT_TRUE(model.finderExtension.get() && log.contains("Finder extension"));
        });
    }
}

class FakeRevoker : public PermissionRevoker {
  public:
    tl::expected<void, PermissionRevokerError> revoke(const PermissionGrant&, const std::string&) override {
        ++calls;
        if (error) return tl::unexpected(*error);
        return {};
    }
    int calls = 0;
    std::optional<PermissionRevokerError> error;
};

TEST(PermissionsSheet, RevokesAServiceOnceAtATimeAndIsSilentWhenThePromptIsDismissed) {
    using Kind = PermissionRevokerError::Kind;
    const test::TemporaryVolume volume;
    const auto user = test::alice();
    const Texts texts;
    const PermissionAudit auditor(volume.files(), user, texts);
    FakeRevoker revoker;
    test::SteppedQueues queues;
    AppTarget app;
    app.bundleID = "com.example.app";
    const PermissionsSheet::Ports ports{auditor, revoker, queues.main, queues.background};
    PermissionsSheet sheet(ports, app);
    sheet.load();
    EXPECT_FALSE(sheet.audit.get().has_value());
    queues.settle();
    ASSERT_TRUE(sheet.audit.get().has_value());

    PermissionGrant camera, microphone;
    camera.service = "kTCCServiceCamera";
    microphone.service = "kTCCServiceMicrophone";
    int done = 0;
    for (const auto& grant : {camera, camera, microphone})
        sheet.revoke(grant, [&] { ++done; });
    EXPECT_EQ(sheet.revoking.get().size(), 2u);
    queues.settle();
    EXPECT_EQ(revoker.calls, 2);
    EXPECT_EQ(done, 3);
    EXPECT_THAT(sheet.revoking.get(), IsEmpty());

    revoker.error = PermissionRevokerError{Kind::authorizationCancelled, {}, {}};
    sheet.revoke(camera);
    queues.settle();
    EXPECT_EQ(sheet.errorText.get(), std::nullopt);
    revoker.error = PermissionRevokerError{Kind::failed, "no", {}};
    sheet.revoke(camera);
    queues.settle();
    EXPECT_TRUE(sheet.errorText.get().has_value());

    camera.state.kind = PermissionGrant::State::Kind::limited;
    camera.scope = PermissionGrant::Scope::system;
    EXPECT_EQ(PermissionsSheet::detail(camera, texts),
              "permissions.sheet.limited · permissions.sheet.system");
    camera.isPathClient = true;
    EXPECT_EQ(PermissionsSheet::detail(camera, texts),
              "permissions.sheet.limited · permissions.sheet.pathClient");
    { PermissionsSheet(ports, app).load(); }
    queues.settle(); // results for a sheet that was closed
}

} // namespace
} // namespace tidwen

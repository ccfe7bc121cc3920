#include "app/shell/opened_files.h"
#include "app/shell/standing_services.h"
#include "base/message.h"
#include "base/path.h"
#include "base/uuid.h"
#include "system/request_inbox.h"
#include "window_fixture.h"

#include <QCoreApplication>
#include <QFileOpenEvent>
#include <gmock/gmock.h>
#include <variant>
#include <vector>

namespace tidwen {
namespace {

TEST(StandingServices, HandOverWhatOtherProcessesAskFor) {
    test::WindowFixture fixture;
    ASSERT_TRUE(fixture.openSample());
    auto& session = fixture.window.mac()->session();
    const OwnBundle bundle;
    const auto post = [&](const char* application) {
        return requestInbox(session.mac(), bundle).post({{application}}, Uuid::random().string());
    };
    ASSERT_TRUE(post("/Applications/Pantry.app")); // before the program has started
    int presented = 0;
    std::vector<Path> asked;
    std::vector<Message> said;
    StandingServices standing(
        session, bundle,
        {[&] { ++presented; },
         [&](const std::vector<Path>& bundles) { asked.insert(asked.end(), bundles.begin(), bundles.end()); },
         [&](const std::vector<Message>& why) { said = why; }});
    EXPECT_TRUE(test::waitUntil([&] { return asked.size() == 1; }));
    ASSERT_TRUE(post("/Applications/Lumen.app"));
    standing.refresh();
    EXPECT_TRUE(test::waitUntil([&] { return asked.size() == 2; }));
    EXPECT_THAT(asked,
                testing::ElementsAre(Path("/Applications/Pantry.app"), Path("/Applications/Lumen.app")));
    ASSERT_TRUE(post("/Applications/Away.app"));
    standing.refresh();
    EXPECT_TRUE(test::waitUntil([&] { return !said.empty(); }));
    EXPECT_EQ(said.front(), (Message{"cli.requests.refused %@", {"/Applications/Away.app"}}));
    EXPECT_EQ(presented, 3);
    EXPECT_FALSE(requestInbox(session.mac(), bundle).isFinderGateOpen()) << "no extension here";
    EXPECT_FALSE(standing.isNeeded()) << "the Trash is not watched";
}

TEST(OpenedFiles, WaitUntilAMacIsOpen) {
    test::WindowFixture fixture;
    const OpenedFiles opened([&](auto paths) { fixture.window.takeFiles(std::move(paths)); });
    const auto drop = [&](const char* application) {
        const auto path = fixture.folder.path() / "Sample/Applications" / application;
        QFileOpenEvent event(QString::fromStdString(path.string()));
        QCoreApplication::sendEvent(QCoreApplication::instance(), &event);
    };
    drop("Lumen.app");
    ASSERT_TRUE(fixture.openSample());
    const auto isReviewing = [&](std::size_t applications) {
        return test::waitUntil([&] {
            return std::holds_alternative<stage::Review>(fixture.flow().stage())
                   && fixture.flow().choice().findings().groups().size() == applications;
        });
    };
    EXPECT_TRUE(isReviewing(1));
    drop("Kip.app");
    drop("Pantry.app");
    EXPECT_TRUE(isReviewing(2)) << "together";
}

} // namespace
} // namespace tidwen

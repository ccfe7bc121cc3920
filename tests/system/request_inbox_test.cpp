#include "base/path.h"
#include "support/fixtures.h"
#include "system/request_inbox.h"
#include "system/uninstall_service.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tidwen::test {
namespace {

const std::string container = "/Users/alice/Library/Group Containers/" + std::string(tidwenApplicationGroup);

class Inbox : public testing::Test {
  protected:
    std::string file(const std::string& name) const { return container + "/requests/" + name; }

    TemporaryVolume volume;
    RecordingLog log;
    RequestInbox inbox{volume.files(), RequestInbox::fallbackContainer(alice()), log};
};

TEST_F(Inbox, GivesEachAcceptablePathOnce) {
    volume.makeFolder("/Applications/Notes.app");
    volume.link("/Applications/Link.app", "Notes.app");
    const std::string notes = "/Applications/Notes.app";
    const UninstallRequest request{{notes, notes, "Applications/Notes.app",
                                    "/Applications/../Applications/Notes.app", "/Applications/Link.app",
                                    "/Applications/Absent.app", "", notes + std::string(1, '\0')}};
    EXPECT_TRUE(inbox.post(request, "one"));
    EXPECT_TRUE(inbox.post(request, "two"));
    volume.write(file("keep.txt"), encode(request));
    const auto drained = inbox.drain();
    EXPECT_EQ(drained.paths, std::vector{Path(notes)});
    EXPECT_EQ(drained.refused, std::vector<std::string>(request.paths.begin() + 2, request.paths.end()));
    EXPECT_TRUE(log.contains("Serving Finder request for 1 app(s)"));
    EXPECT_FALSE(volume.exists(file("one.json")));
    EXPECT_TRUE(volume.exists(file("keep.txt")));
    EXPECT_TRUE(inbox.drain().isEmpty());
}

TEST_F(Inbox, DropsWhatIsNoRequest) {
    volume.makeFolder("/A.app");
    const auto valid = encode({{"/A.app"}});
    for (const std::string text : {"", "{", "[]", "{\"paths\":1}", "{\"paths\":[\"/A.app\",1]}", "\xff"})
        EXPECT_FALSE(decodeRequest(text)) << text;
    volume.write(file("bad.json"), "{");
    volume.write(file("huge.json"), valid);
    std::filesystem::resize_file(volume.host(file("huge.json")), 100u << 20);
    volume.write(file("deep.json"), "{\"paths\":" + std::string(500'000, '['));
    volume.write(file("many.json"), encode({std::vector<std::string>(10'000, "/A.app")}));
    volume.write("/elsewhere.json", valid);
    volume.link(file("link.json"), "/elsewhere.json");
    volume.makeFolder(file("folder.json"));
    ASSERT_EQ(::mkfifo(volume.host(file("pipe.json")).c_str(), 0600), 0);
    EXPECT_EQ(inbox.drain().unreadable, 5u);
    for (const auto* name : {"bad.json", "huge.json", "deep.json", "many.json", "link.json"})
        EXPECT_FALSE(volume.exists(file(name))) << name;
    EXPECT_TRUE(volume.exists(file("pipe.json")));
    EXPECT_TRUE(volume.exists("/elsewhere.json"));
    EXPECT_TRUE(log.contains("Finder request dropped: nothing at the paths it named"));

    std::filesystem::rename(volume.host(container + "/requests"), volume.host("/elsewhere"));
    volume.write("/elsewhere/x.json", valid);
    volume.link(container + "/requests", "/elsewhere");
    EXPECT_TRUE(inbox.drain().isEmpty());
    EXPECT_FALSE(inbox.post({{"/A.app"}}, "y"));
    EXPECT_TRUE(volume.exists("/elsewhere/x.json"));
}

TEST_F(Inbox, TellsAFolderThatCannotBeReadFromAnEmptyOne) {
    EXPECT_FALSE(inbox.drain().isClosed) << "no folder";
    volume.link(container, container); // leads to itself
    EXPECT_TRUE(inbox.drain().isClosed);
}

TEST_F(Inbox, LeavesARequestThatIsStillBeingWritten) {
    volume.makeFolder("/A.app");
    const auto unfinished = file(".tidwen-new-one.json");
    volume.write(unfinished, encode({{"/A.app"}}).substr(0, 9));
    const int writer = ::open(volume.host(unfinished).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(writer, LOCK_EX), 0); // as whoever writes it holds it
    EXPECT_EQ(inbox.waiting(), 0u);
    EXPECT_TRUE(inbox.drain().isEmpty());
    EXPECT_TRUE(volume.exists(unfinished));
    ::close(writer);
    EXPECT_TRUE(inbox.drain().isEmpty());
    EXPECT_FALSE(volume.exists(unfinished)) << "its writer is gone";
}

TEST_F(Inbox, LeavesWhatIsBeyondItsLimitsForTheNextDrain) {
    volume.makeFolder("/A.app");
    for (std::size_t i = 0; i <= RequestInbox::maxRequestsPerDrain; ++i)
        volume.write(file(std::to_string(i) + ".json"), encode({{"/A.app"}}));
    EXPECT_EQ(inbox.waiting(), RequestInbox::maxRequestsPerDrain + 1);
    EXPECT_EQ(inbox.drain().waiting, 1u);
    EXPECT_EQ(inbox.drain().paths.size(), 1u);
    EXPECT_TRUE(inbox.drain().isEmpty());

    const UninstallRequest full{std::vector<std::string>(RequestInbox::maxPathsPerRequest, "/A.app")};
    EXPECT_TRUE(inbox.post(full, "1"));
    EXPECT_TRUE(inbox.post(full, "2"));
    inbox.drain();
    EXPECT_TRUE(volume.exists(file("2.json")));
    EXPECT_FALSE(inbox.post({std::vector<std::string>(10'000, "/A.app")}, "many"));
    EXPECT_FALSE(inbox.post({{"/\xff.app"}}, "bytes"));
}

TEST(OwnBundle, NamesTheGroup) {
    const std::pair<const char*, std::string> cases[] = {{"TEAM.com.example.group", "TEAM.com.example.group"},
                                                         {"", std::string(tidwenApplicationGroup)},
                                                         {"..", std::string(tidwenApplicationGroup)},
                                                         {"a/b", std::string(tidwenApplicationGroup)}};
    for (const auto& [declared, group] : cases)
        EXPECT_EQ(ownBundle("/Applications/Tidwen.app", {{"CorvellaAppGroup", std::string(declared)}}),
                  (OwnBundle{false, group}));
    EXPECT_FALSE(RequestInbox::fallbackContainer(alice(), ownBundle("/T.app/Contents/PlugIns/F.appex", {})));
}

TEST_F(Inbox, AServiceHandsOverTheBundlesOfASelection) {
    volume.makeFolder("/A.APP");
    std::vector<Path> served;
    UninstallService service(inbox, log, [&] { served = inbox.drain().paths; });
    using enum UninstallService::Outcome;
    EXPECT_EQ(service.handOver({Path("/Letter.pdf")}), noApplication);
    EXPECT_TRUE(log.contains("Service invoked on a selection with no app bundle in it"));
    EXPECT_EQ(service.handOver({Path("/Letter.pdf"), Path("/A.APP")}), handedOver);
    EXPECT_TRUE(log.contains("Service handed over 1 app(s)"));
    EXPECT_EQ(served, std::vector{Path("/A.APP")});
    RequestInbox none(volume.files(), std::nullopt, log);
    EXPECT_EQ(UninstallService(none, log).handOver({Path("/A.APP")}), notPosted);
}

TEST_F(Inbox, GateComesAndGoes) {
    inbox.setFinderGate(true);
    EXPECT_TRUE(volume.exists(container + "/finder-gate.json"));
    inbox.setFinderGate(false);
    EXPECT_FALSE(volume.exists(container + "/finder-gate.json"));
    RequestInbox none(volume.files(), std::nullopt, log);
    EXPECT_FALSE(none.post({}, "x"));
    EXPECT_TRUE(none.drain().isEmpty());
}

} // namespace
} // namespace tidwen::test

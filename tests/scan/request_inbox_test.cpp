#include "scan/request_inbox.h"
#include "support/fixtures.h"

#include <filesystem>
#include <gtest/gtest.h>

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
    EXPECT_EQ(inbox.drain(), std::vector{Path(notes)});
    EXPECT_TRUE(log.contains("Serving Finder request for 1 app(s)"));
    EXPECT_FALSE(volume.exists(file("one.json")));
    EXPECT_TRUE(volume.exists(file("keep.txt")));
    EXPECT_TRUE(inbox.drain().empty());
}

TEST_F(Inbox, DropsWhatIsNoRequest) {
    volume.makeFolder("/A.app");
    const auto valid = encode({{"/A.app"}});
    for (const std::string text : {"", "{", "[]", "{\"paths\":1}", "{\"paths\":[\"/A.app\",1]}", "\xff"})
        EXPECT_FALSE(decodeRequest(text)) << text;
    volume.write(file("bad.json"), "{");
    volume.write(file("huge.json"), valid);
    std::filesystem::resize_file(volume.host(file("huge.json")), 100u << 20);
    volume.write("/elsewhere.json", valid);
    volume.link(file("link.json"), "/elsewhere.json");
    EXPECT_TRUE(inbox.drain().empty());
    for (const auto* name : {"bad.json", "huge.json", "link.json"})
        EXPECT_FALSE(volume.exists(file(name))) << name;
    EXPECT_TRUE(volume.exists("/elsewhere.json"));
    EXPECT_TRUE(log.contains("Finder request dropped: nothing at the paths it named"));
}

TEST_F(Inbox, TakesNoMoreThanItsLimit) {
    UninstallRequest request;
    for (int i = 0; i < 10'000; ++i)
        request.paths.push_back("/A" + std::to_string(i));
    for (int i = 0; i < 1'100; ++i)
        volume.write(request.paths[i], "");
    EXPECT_TRUE(inbox.post(request, "many"));
    EXPECT_EQ(inbox.drain().size(), RequestInbox::maxPathsPerDrain);
}

TEST_F(Inbox, GateComesAndGoes) {
    inbox.setFinderGate(true);
    EXPECT_TRUE(volume.exists(container + "/finder-gate.json"));
    inbox.setFinderGate(false);
    EXPECT_FALSE(volume.exists(container + "/finder-gate.json"));
    RequestInbox none(volume.files(), std::nullopt, log);
    EXPECT_FALSE(none.post({}, "x"));
    EXPECT_TRUE(none.drain().empty());
}

} // namespace
} // namespace tidwen::test

#include "base/path.h"
#include "base/property_list.h"
#include "scan/applications/job_program.h"

#include "scan/applications/launch_item.h"
#include "scan/applications/shared_names.h"
#include "support/fixtures.h"
#include "support/matchers.h"

#include <string>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

TEST(JobProgram, IsGoneOnlyWhereThisDiskHoldsItsPlace) {
    const test::TemporaryVolume volume;
    volume.write("/Applications/Here.app/Contents/MacOS/agent", "x");
    volume.write("/Library/Other/x", "x");
    volume.write("/usr/local/bin/tool", "x");
    volume.write("/Users/alice/bin/Script", "x");
    volume.makeFolder("/Volumes/Detached");
    volume.write("/Volumes/Attached/x", "x");
    volume.makeFolder("/opt");
    volume.link("/Applications/Away.app", "/Volumes/Drive/Away.app");
    volume.link("/Applications/Detached", "/Volumes/Detached");
    volume.link("/var", "private/var");
    const std::pair<const char*, JobProgram> cases[] = {
        {"/Applications/Here.app/Contents/MacOS/agent", JobProgram::present},
        {"/Applications/Here.app/Contents/MacOS/other", JobProgram::gone},
        {"/Applications/Gone.app/Contents/MacOS/agent", JobProgram::gone},
        {"/Library/PrivilegedHelperTools/com.gone.tool", JobProgram::gone},
        {"/usr/local/bin/other", JobProgram::gone},
        {"/atroot", JobProgram::gone},
        // Parts of macOS and other disks that are missing.
        {"/bin/zsh", JobProgram::away},
        {"/usr/bin/open", JobProgram::away},
        {"/usr/libexec/deep/tool", JobProgram::away},
        {"/System/Library/CoreServices/x", JobProgram::away},
        {"/Volumes/Drive/tool", JobProgram::away},
        {"/Volumes/Attached/tool", JobProgram::away},
        {"/Volumes/Detached/tool", JobProgram::away},
        // Through links to such places.
        {"/Applications/Away.app/Contents/MacOS/agent", JobProgram::away},
        {"/Applications/Detached/Tool.app/x", JobProgram::away},
        {"/var/tool/x", JobProgram::away},
        // No absolute path, or one that a Mac spells differently.
        {"tool", JobProgram::away},
        {"", JobProgram::away},
        {"/", JobProgram::away},
        {"/Users/alice/BIN/script", JobProgram::away},
        {"/users/alice/bin/other", JobProgram::away},
        // In folders that may be separate volumes.
        {"/nix/store/tool", JobProgram::unknown},
        {"/opt/maker/tool", JobProgram::unknown},
        {"/Users/bob/bin/tool", JobProgram::unknown},
    };
    JobPrograms programs(volume.files());
    for (const auto& [program, expected] : cases)
        EXPECT_EQ(programs.find(program), expected) << program;
}

TEST(JobProgram, BelongsToTheApplicationsThatTheJobNames) {
    const test::TemporaryVolume volume;
    const std::pair<PropertyListValue, std::vector<std::string>> cases[] = {
        {PropertyListValue("com.One.app"), {"com.one.app"}},
        {PropertyListValue(PropertyListArray{"com.one.app", "org.Two.app"}), {"com.one.app", "org.two.app"}},
        {PropertyListValue(true), {}},
    };
    for (const auto& [value, identifiers] : cases) {
        volume.write("/job.plist", writeXmlPropertyList(PropertyListDictionary{
                                       {"Label", "x"}, {"AssociatedBundleIdentifiers", value}}));
        EXPECT_EQ(readAssociatedBundleIDs(volume.files(), Path("/job.plist")), identifiers);
    }
}

TEST(SharedNames, KnowApplesOwnUnderOtherNames) {
    for (const auto* apples : {"com.apple.notes", "243lu875e5.groups.com.apple.podcasts",
                               "group.is.workflow.my.app", "is.workflow.shortcuts", "edu.mit.kerberos",
                               "org.cups.printingprefs", "systemgroup.com.apple.configurationprofiles"})
        EXPECT_TRUE(isApplesIdentifier(apples)) << apples;
    for (const auto* others : {"com.applet.notes", "is.workflows.app", "edu.mit.kerberosity", "com.example"})
        EXPECT_FALSE(isApplesIdentifier(others)) << others;
}

} // namespace
} // namespace tidwen

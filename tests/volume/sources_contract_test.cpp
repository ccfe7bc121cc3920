// The ports that a running Mac answers with tools and a volume with files must agree: both implementations
// fulfil the same contract.

#include "base/path.h"
#include "base/property_list.h"
#include "operations/tool_launchd.h"
#include "operations/tool_receipts.h"
#include "operations/tool_system_extensions.h"
#include "platform/process_runner.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"
#include "sample/bill_of_materials_writer.h"
#include "support/fixtures.h"
#include "support/known_applications_contract.h"
#include "support/matchers.h"
#include "support/recording_tools.h"
#include "support/stand_ins.h"
#include "volume/volume_sources.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {
namespace {

struct Package {
    std::string id;
    std::string location; ///< as recorded
    std::vector<std::string> files = {};
};
struct Extension {
    std::string team, id, name;
};
struct Facts {
    std::vector<Package> packages = {};
    std::vector<Extension> extensions = {};
    std::map<std::string, bool> userOverrides = {}, systemOverrides = {};
};

/// The ports over one set of facts, stored as on a volume.
class VolumeSources {
    test::TemporaryVolume volume_;
    UserEnvironment user_ = test::alice();

  public:
    const VolumeReceipts receipts{volume_.files()};
    const VolumeSystemExtensions extensions{volume_.files()};
    const VolumeLaunchd launchd{volume_.files(), user_};

    explicit VolumeSources(const Facts& facts) {
        for (const auto& package : facts.packages) {
            const auto place = "/private/var/db/receipts/" + package.id;
            volume_.write(place + ".plist", writeBinaryPropertyList(PropertyListDictionary{
                                                {"InstallPrefixPath", package.location}}));
            std::vector<BomEntry> entries;
            for (const auto& file : package.files)
                entries.push_back({file});
            volume_.write(place + ".bom", writeBillOfMaterials(entries));
        }
        PropertyListArray records;
        for (const auto& each : facts.extensions)
            records.push_back(PropertyListDictionary{
                {"identifier", each.id},
                {"teamID", each.team},
                {"container",
                 PropertyListDictionary{{"bundlePath", "/Applications/" + each.name + ".app"}}}});
        volume_.write("/Library/SystemExtensions/db.plist",
                      writeXmlPropertyList(PropertyListDictionary{{"extensions", records}}));
        const std::string folder = "/private/var/db/com.apple.xpc.launchd/";
        const auto write = [&](const std::string& name, const std::map<std::string, bool>& overrides) {
            volume_.write(folder + name,
                          writeXmlPropertyList(PropertyListDictionary(overrides.begin(), overrides.end())));
        };
        write("disabled.plist", facts.systemOverrides);
        write("disabled.501.plist", facts.userOverrides);
    }
};

/// The same, as printed by the tools of a Mac.
class ToolSources {
    test::RecordingTools tools_;

  public:
    const ToolReceipts receipts{tools_};
    const ToolSystemExtensions extensions{tools_};
    const ToolLaunchd launchd{tools_, 501};

    explicit ToolSources(Facts facts) : facts_(std::move(facts)) {
        tools_.answer = [this](const test::RecordingTools::Call& call) -> test::RecordingTools::Answer {
            const auto& verb = call.arguments.front();
            if (verb == "--pkgs") return packageList();
            if (verb == "list") return extensionTable();
            if (verb == "print-disabled") return overrides(call.arguments.back() == "system");
            for (const auto& package : facts_.packages)
                if (package.id == call.arguments.back())
                    return verb == "--files" ? files(package) : info(package);
            return ProcessResult{1, "", "No receipt for it found at '/'.\n"};
        };
    }

  private:
    ProcessResult packageList() const {
        std::string output;
        for (const auto& package : facts_.packages)
            output += package.id + "\n";
        return {0, output, ""};
    }
    static ProcessResult info(const Package& package) {
        return {0,
                writeXmlPropertyList(PropertyListDictionary{
                    {"pkgid", package.id}, {"volume", "/"}, {"install-location", package.location}}),
                ""};
    }
    static ProcessResult files(const Package& package) {
        std::string output;
        for (const auto& file : package.files)
            output += file + "\n";
        return {0, output, ""};
    }
    ProcessResult extensionTable() const {
        std::string output = "extension(s)\nenabled\tactive\tteamID\tbundleID (version)\tname\t[state]\n";
        for (const auto& each : facts_.extensions)
            output +=
                "*\t*\t" + each.team + "\t" + each.id + " (1.0/1)\t" + each.name + "\t[activated enabled]\n";
        return {0, output, ""};
    }
    ProcessResult overrides(bool isSystemDomain) const {
        std::string output = "disabled services = {\n";
        for (const auto& [label, isDisabled] : isSystemDomain ? facts_.systemOverrides : facts_.userOverrides)
            output += "\t\"" + label + "\" => " + (isDisabled ? "disabled" : "enabled") + "\n";
        return {0, output + "}\n", ""};
    }

    Facts facts_;
};

template<class Sources>
class SourcesContract : public testing::Test {};
using BothSources = testing::Types<VolumeSources, ToolSources>;
TYPED_TEST_SUITE(SourcesContract, BothSources, );

TYPED_TEST(SourcesContract, PackagesAreListedByIdentifierAndReadWithTheirPlace) {
    const TypeParam sources(
        {.packages = {{"com.example.notes", "", {"Applications"}},
                      {"com.example.notes-extra", "/"},
                      {"com.example.a b's", "Applications", {"Notes.app", "Notes.app/Icon\r"}},
                      {"com.example.inside", "Applications/Notes.app/Contents/"},
                      {"com.example.absolute", "/Library//Fonts"}}});
    const auto& receipts = sources.receipts;
    EXPECT_THAT(receipts.packageIDs(),
                ElementsAre("com.example.a b's", "com.example.absolute", "com.example.inside",
                            "com.example.notes", "com.example.notes-extra"));
    const auto read = [&](const std::string& id) {
        return receipts.read(id).value_or(Receipt{"none", Path(), {}});
    };
    EXPECT_EQ(read("com.example.notes"), (Receipt{"com.example.notes", Path("/"), {"Applications"}}));
    EXPECT_EQ(read("com.example.notes-extra"), (Receipt{"com.example.notes-extra", Path("/"), {}}));
    EXPECT_EQ(read("com.example.a b's"),
              (Receipt{"com.example.a b's", Path("/Applications"), {"Notes.app", "Notes.app/Icon\r"}}));
    EXPECT_EQ(read("com.example.inside").installBase, Path("/Applications/Notes.app/Contents"));
    EXPECT_EQ(read("com.example.absolute").installBase, Path("/Library/Fonts"));
    for (const char* unknown : {"com.example.none", "", "-x", "../receipts/com.example.notes"})
        EXPECT_EQ(receipts.read(unknown), std::nullopt) << unknown;
}

TYPED_TEST(SourcesContract, ExtensionsAreFoldedByIdentifier) {
    const TypeParam sources({.extensions = {{"ABCDE12345", "com.example.filter", "Filter (beta)"},
                                            {"XYZ0012345", "org.corvella.driver", "Driver"},
                                            {"OTHER12345", "com.example.filter", "Filter 2"}}});
    EXPECT_THAT(sources.extensions.list(),
                ElementsAre(SystemExtensionRecord{"ABCDE12345", "com.example.filter", "Filter (beta)"},
                            SystemExtensionRecord{"XYZ0012345", "org.corvella.driver", "Driver"}));
}

TYPED_TEST(SourcesContract, OverridesAreToldByDomain) {
    const TypeParam sources(
        {.userOverrides = {{"com.example.agent", true}, {"com.example.on", false}, {"Plain", true}},
         .systemOverrides = {{"com.example.daemon", true}}});
    EXPECT_THAT(
        sources.launchd.disabledOverrides(false),
        ElementsAre(Pair("Plain", true), Pair("com.example.agent", true), Pair("com.example.on", false)));
    EXPECT_THAT(sources.launchd.disabledOverrides(true), ElementsAre(Pair("com.example.daemon", true)));
}

/// A volume has no records of its own; its bundles are looked at by whoever asks.
TEST(KnownApplicationsContract, OnAVolumeAndInItsStandIn) {
    test::expectToKnowOnly({}, VolumeKnownApplications());
    test::FakeKnownApplications registered;
    registered.identifiers = {"com.example.Marlin", "org.example.ferry"};
    test::expectToKnowOnly(registered.identifiers, registered);
}

} // namespace
} // namespace tidwen

#include "scan/launch_item.h"

#include "base/property_list.h"
#include "support/fixtures.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

using Dictionary = PropertyListDictionary;
using Array = PropertyListArray;

TEST(LaunchItem, ReadsLabelAndProgram) {
    const PropertyListValue label("j");
    const std::pair<PropertyListValue, std::optional<std::string>> jobs[] = {
        {Dictionary{{"Label", label}, {"Program", "/a"}, {"ProgramArguments", Array{"/b"}}}, "/a"},
        {Dictionary{{"Label", label}, {"Program", 1}, {"ProgramArguments", Array{"/b", "-v"}}}, "/b"},
        {Dictionary{{"Label", label}, {"ProgramArguments", Array{}}}, std::nullopt},
        {Dictionary{{"Label", label}, {"ProgramArguments", Array{"/b", 1}}}, std::nullopt}};
    const PropertyListValue others[] = {Dictionary{{"Label", ""}}, Dictionary{{"Label", 4}},
                                        Dictionary{{"Program", "/a"}}, Array{"Label", "j"}};
    const test::TemporaryVolume volume;
    const Path file("/Library/LaunchDaemons/job.plist");
    const auto read = [&](const PropertyListValue& list) {
        volume.write(file.string(), writeBinaryPropertyList(list));
        return readLaunchItem(volume.files(), file, true);
    };
    for (const auto& [list, program] : jobs)
        EXPECT_EQ(read(list), (LaunchItem{"j", file, true, program}));
    for (const auto& list : others)
        EXPECT_EQ(read(list), std::nullopt) << writeXmlPropertyList(list);
}

TEST(LaunchItem, ListsTheVisiblePropertyListsOfAFolder) {
    const test::TemporaryVolume volume;
    const auto job = [](const char* label) { return writeXmlPropertyList(Dictionary{{"Label", label}}); };
    for (const char* file : {"b.PLIST", "a.plist", ".hidden.plist", "c.plist.bak", "deep/d.plist"})
        volume.write(std::string("/jobs/") + file, job(file));
    volume.write("/jobs/cut.plist", job("cut").substr(0, 120));
    volume.makeFolder("/jobs/folder.plist");
    volume.link("/jobs/dangling.plist", "/nowhere");

    std::vector<std::string> labels;
    for (const auto& item : listLaunchItems(volume.files(), Path("/jobs"), false))
        labels.push_back(item.label);
    EXPECT_EQ(labels, (std::vector<std::string>{"a.plist", "b.PLIST"}));
}

} // namespace
} // namespace tidwen

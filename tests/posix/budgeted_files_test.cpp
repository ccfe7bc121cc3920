#include "base/path.h"
#include "platform/budgeted_files.h"
#include "platform/file_system.h"
#include "platform/read_budget.h"

#include "base/property_list.h"
#include "platform/property_list_file.h"
#include "support/matchers.h"
#include "support/temporary_folder.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace tidwen {
namespace {

constexpr ReadBudget::Limits thousandBytes{.bytes = 1000};

TEST(BudgetedFiles, ReadsUntilTheBytesAreSpentAndCountsTheRest) {
    test::TemporaryVolume volume;
    volume.write("/a", std::string(600, 'x'));
    const BudgetedFiles files(volume.files(), ReadBudget(thousandBytes));
    EXPECT_TRUE(files.read(Path("/a"), 600));
    const FileSystem& asReadersSeeIt = files;
    EXPECT_TRUE(BudgetedFiles(asReadersSeeIt).readRange(Path("/a"), 0, 600))
        << "a nested run uses the same budget";
    EXPECT_TRUE(files.budget().isExhausted());

    EXPECT_EQ(files.read(Path("/a"), 600).error().fault, FileFault::exhausted);
    EXPECT_EQ(files.readRange(Path("/a"), 0, 1).error().fault, FileFault::exhausted);
    EXPECT_EQ(files.list(Path("/")).error().fault, FileFault::exhausted);
    EXPECT_FALSE(readPropertyList(files, Path("/a")));
    EXPECT_TRUE(files.exists(Path("/a"))) << "existence is still reported";
    EXPECT_EQ(files.budget().leftOut(), 4u);
}

TEST(BudgetedFiles, SpendsTheTimeOfTheWork) {
    static std::chrono::seconds now;
    now = std::chrono::seconds(0);
    const ReadBudget budget({.time = std::chrono::seconds(2)},
                            [] { return std::chrono::nanoseconds(now += std::chrono::seconds(1)); });
    test::TemporaryVolume volume;
    const BudgetedFiles files(volume.files(), budget);
    EXPECT_TRUE(files.list(Path("/")));
    EXPECT_FALSE(budget.isExhausted());
    EXPECT_TRUE(files.list(Path("/")));
    EXPECT_EQ(files.list(Path("/")).error().fault, FileFault::exhausted);
}

TEST(BudgetedFiles, ParsesALargeListThatManyLinksNameOnce) {
    test::TemporaryVolume volume;
    const auto large = writeXmlPropertyList(PropertyListArray(20'000, PropertyListValue("text")));
    volume.write("/large.plist", large);
    const auto bytes = static_cast<std::int64_t>(large.size());
    const BudgetedFiles files(volume.files(), ReadBudget({.bytes = bytes * 2}));
    for (int i = 0; i < 50; ++i) {
        const auto name = "/" + std::to_string(i) + ".plist";
        volume.link(name, "large.plist");
        EXPECT_TRUE(readPropertyList(files, Path(name))) << name;
    }
    EXPECT_FALSE(readPropertyList(files, Path("/large.plist"), {.bytes = 1000})) << "other limits";
    EXPECT_EQ(files.budget().leftOut(), 0u);
}

} // namespace
} // namespace tidwen

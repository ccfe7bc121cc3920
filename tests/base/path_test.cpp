#include "base/path.h"

#include "support/matchers.h"

#include <string>

namespace tidwen {
namespace {

TEST(Path, SplitsAsFoundationDoes) {
    constexpr struct {
        const char *given, *text, *parent, *last, *stem, *extension;
    } cases[] = {
        {"/Users/Marlin.app", "/Users/Marlin.app", "/Users", "Marlin.app", "Marlin", "app"},
        {"//Library///Caches//", "/Library/Caches", "/Library", "Caches", "Caches", ""},
        {"/", "/", "/", "/", "/", ""},
        {"/u/.hidden", "/u/.hidden", "/u", ".hidden", ".hidden", ""},
        {"/u/.hidden.plist", "/u/.hidden.plist", "/u", ".hidden.plist", ".hidden", "plist"},
        {"/u/archive.tar.gz", "/u/archive.tar.gz", "/u", "archive.tar.gz", "archive.tar", "gz"},
        {"/u/ends in point.", "/u/ends in point.", "/u", "ends in point.", "ends in point.", ""},
        {"relative/x.Y", "relative/x.Y", "relative", "x.Y", "x", "Y"},
        {"", "", "", "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        const Path path{std::string(c.given)};
        EXPECT_EQ(path.string(), c.text);
        EXPECT_EQ(path.parent().string(), c.parent);
        EXPECT_EQ(path.lastComponent(), c.last);
        EXPECT_EQ(path.stem(), c.stem);
        EXPECT_EQ(path.extension(), c.extension);
    }
    EXPECT_THAT(Path("/a/b").components(), ElementsAre("/", "a", "b"));
    EXPECT_THAT(Path("a/b").components(), ElementsAre("a", "b"));
    EXPECT_THAT(Path("").components(), ElementsAre());
    EXPECT_EQ(Path("/x.PLIST").lowercasedExtension(), "plist");
}

TEST(Path, ResolvesDotsByTextAlone) {
    constexpr const char* cases[][2] = {
        {"/a/../../b", "/b"}, {"/a/./b/.", "/a/b"},  {"/a/b/..", "/a"},     {"/..", "/"},
        {"/a/..", "/"},       {"../a/../b", "../b"}, {"a/../../b", "../b"}, {"/a/...", "/a/..."},
    };
    for (const auto& [given, expected] : cases)
        EXPECT_EQ(Path(given).standardized().string(), expected) << given;
    EXPECT_TRUE(Path("/a/../b").hasTraversal());
    EXPECT_FALSE(Path("/a/..b/c..").hasTraversal());
}

TEST(Path, IsWithinComparesWholeComponents) {
    constexpr struct {
        const char *path, *ancestor;
        bool exactly, ignoringCase;
    } cases[] = {
        {"/a/b/c", "/a/b", true, true},
        {"/a/bc", "/a/b", false, false},
        {"/a", "/a/b", false, false},
        {"/a", "/", true, true},
        {"/LIBRARY/Caches", "/Library", false, true},
        {"/Users/Zo\xC3\xAB/x", "/users/zoe\xCC\x88", false, true}, // composed and decomposed
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.path) + " in " + c.ancestor);
        EXPECT_EQ(Path(c.path).isWithin(Path(c.ancestor)), c.exactly);
        EXPECT_EQ(Path(c.path).isWithinIgnoringCase(Path(c.ancestor)), c.ignoringCase);
    }
}

TEST(Path, Appends) {
    EXPECT_EQ((Path() / "a" / "b/c").string(), "/a/b/c");
    EXPECT_EQ((Path("/a") / "").string(), "/a");
    EXPECT_EQ((Path("") / "a").string(), "a");
    EXPECT_EQ((Path("/a") / "/b/").string(), "/a/b");
}

} // namespace
} // namespace tidwen

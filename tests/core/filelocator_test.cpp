#include "nvcode2/nvfilelocator.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/codeof.h"

namespace {

std::string FileNameIn(const NvFileLocator& inLocator) {
    char name[520];
    inLocator.GetFileName(name);
    return name;
}

TEST(FileLocatorTest, SplitsAtTheLastSeparatorOfEitherKind) {
    const struct {
        const char* path;
        const char* name;
        const char* renamed; // with the file name "c.gif"
    } rows[] = {
        {"C:\\a\\b.gif", "b.gif", "C:\\a\\c.gif"},
        {"/home/a/b.gif", "b.gif", "/home/a/c.gif"},
        {"/a\\b.gif", "b.gif", "/a\\c.gif"},
        {"\\a/b.gif", "b.gif", "\\a/c.gif"},
        {"b.gif", "b.gif", "c.gif"},
        {"/b", "b", "/c.gif"},
        {"/a/", "", "/a/c.gif"},
        {"\\", "", "\\c.gif"},
    };
    for (const auto& row : rows) {
        NvFileLocator locator(row.path);
        EXPECT_EQ(FileNameIn(locator), row.name) << row.path;
        locator.SetFileName("c.gif");
        EXPECT_STREQ(locator.GetPath(), row.renamed);
    }
}

TEST(FileLocatorTest, NamesFitWholeOrNotAtAll) {
    const NvFileLocator locator("/folder/12345");
    char exact[6];
    locator.GetFileName(exact);
    EXPECT_STREQ(exact, "12345");
    char tight[5] = "kept";
    EXPECT_EQ(CodeOf([&] { locator.GetFileName(tight); }), 29u);
    EXPECT_STREQ(tight, "kept");

    const std::string path = std::string(100000, 'd') + "/name";
    EXPECT_EQ(NvFileLocator(path.c_str()).GetPath(), path);
}

TEST(FileLocatorTest, SpecifiedMeansThereIsAPath) {
    NvFileLocator locator;
    EXPECT_FALSE(locator.IsSpecified());
    EXPECT_FALSE(NvFileLocator(nullptr).IsSpecified());
    locator.SetPath("/a/b");
    EXPECT_TRUE(locator.IsSpecified());
    locator.SetPath(locator.GetPath() + 2); // out of its own path
    EXPECT_STREQ(locator.GetPath(), "/b");

    NvFileLocator copy = locator;
    locator.ClearPath();
    EXPECT_FALSE(locator.IsSpecified());
    EXPECT_STREQ(copy.GetPath(), "/b");
    copy = locator;
    EXPECT_FALSE(copy.IsSpecified());
}

TEST(FileLocatorDeathTest, NeedsAPathToSplit) {
    char name[10];
    EXPECT_DEATH(NvFileLocator().GetFileName(name), "\"mIsSpecified\"");
    EXPECT_DEATH(NvFileLocator().SetFileName("a"), "\"mPathStr\"");
    EXPECT_DEATH(NvFileLocator("").GetFileName(name), "Assertion failed");
    EXPECT_DEATH(NvFileLocator("/a").SetFileName(nullptr), "\"inFileName\"");
}

} // namespace

// Folders, file identities, the data folder and scratch files on Windows.

#include "tests/support/test.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

namespace {

namespace fs = std::filesystem;

TEST(System, AFileHasOneIdentityInWhateverCaseItIsNamed) {
    const TestFolder folder;
    const std::string file = WriteTestFile(folder / "a.gif", "x");
    const auto identity = WnGetFileIdentity(file.c_str());
    EXPECT_TRUE(identity.has_value());
    EXPECT_EQ(WnGetFileIdentity((folder / "A.GIF").c_str()), identity);
    EXPECT_NE(WnGetFileIdentity(WriteTestFile(folder / "b.gif", "x").c_str()), identity);
    EXPECT_EQ(WnGetFileIdentity((folder / "none").c_str()), std::nullopt);

    const auto state = WnGetFileState(file.c_str());
    WriteTestFile(file, "xx");
    EXPECT_NE(WnGetFileState(file.c_str()), state);
}

TEST(System, TheScratchFileIsTheFixedOneUnlessThatIsTaken) {
    const TestFolder folder;
    const TestEnvironment environment(folder);
    WriteTestFile(folder / "parvigif-scratch-dead01/TEMP.GIF", "of a killed run");
    std::string other;
    {
        const WnScratchFile fixed;
        EXPECT_STREQ(fixed.GetPath(), "C:\\TEMP.GIF");
        const WnScratchFile second;
        other = second.GetPath();
        EXPECT_TRUE(other.starts_with(folder / "parvigif-")) << other;
        EXPECT_TRUE(other.ends_with("\\TEMP.GIF")) << other;
        WriteTestFile(other, "x");
        EXPECT_FALSE(fs::exists(folder / "parvigif-scratch-dead01"));
    }
    EXPECT_FALSE(fs::exists("C:\\TEMP.GIF"));
    EXPECT_FALSE(fs::exists(fs::path(other).parent_path()));
}

} // namespace

// Folders, file identities, the data folder and scratch files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "nvcode2/nverrorcode.h"
#include "tests/support/testfolder.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

namespace {

namespace fs = std::filesystem;

TEST(System, AFolderListsItsRegularFilesInBytewiseOrder) {
    const TestFolder folder;
    for (const char* name : {"b.gif", "B.gif", "a.gif", "\xc3\xa9.gif", ".hidden.gif"})
        WriteTestFile(folder / name, "x");
    fs::create_directory(folder / "folder.gif");
    mkfifo((folder / "pipe.gif").c_str(), 0600);
    fs::create_symlink("a.gif", folder / "link.gif");
    fs::create_symlink("nothing", folder / "dangling.gif");
    EXPECT_THAT(WnListFiles(folder.GetPath().c_str()),
                testing::ElementsAre(".hidden.gif", "B.gif", "a.gif", "b.gif", "link.gif", "\xc3\xa9.gif"));
    EXPECT_THROW(WnListFiles((folder / "none").c_str()), NvErrorCode);
}

TEST(System, LinksHaveTheIdentityOfTheirFile) {
    const TestFolder folder;
    const std::string file = WriteTestFile(folder / "a.gif", "x");
    const std::string other = WriteTestFile(folder / "b.gif", "x");
    fs::create_symlink("a.gif", folder / "soft");
    fs::create_hard_link(file, folder / "hard");
    const auto identity = WnGetFileIdentity(file.c_str());
    EXPECT_TRUE(identity.has_value());
    EXPECT_EQ(WnGetFileIdentity((folder / "soft").c_str()), identity);
    EXPECT_EQ(WnGetFileIdentity((folder / "hard").c_str()), identity);
    EXPECT_NE(WnGetFileIdentity(other.c_str()), identity);
    EXPECT_EQ(WnGetFileIdentity((folder / "none").c_str()), std::nullopt);
}

TEST(System, KindsOfFiles) {
    const TestFolder folder;
    WriteTestFile(folder / "file", "x");
    mkfifo((folder / "pipe").c_str(), 0600);
    fs::create_symlink("nothing", folder / "dangling");
    fs::create_symlink("file", folder / "link");
    EXPECT_EQ(WnGetFileKind((folder / "file").c_str()), WnFileKind::km_RegularFile);
    EXPECT_EQ(WnGetFileKind((folder / "link").c_str()), WnFileKind::km_RegularFile);
    EXPECT_EQ(WnGetFileKind(folder.GetPath().c_str()), WnFileKind::km_Folder);
    EXPECT_EQ(WnGetFileKind((folder / "pipe").c_str()), WnFileKind::km_Other);
    EXPECT_EQ(WnGetFileKind((folder / "dangling").c_str()), WnFileKind::km_Other);
    EXPECT_EQ(WnGetFileKind((folder / "none").c_str()), WnFileKind::km_Missing);
}

TEST(System, TheDataFolderFallsBackToAPrivateOne) {
    const TestFolder folder;
    const TestEnvironment environment(folder);
    EXPECT_EQ(WnGetDataFolder(), folder / "state/Norvek");
    EXPECT_TRUE(fs::is_directory(folder / "state/Norvek"));

    fs::remove_all(folder / "state");
    WriteTestFile(folder / "state", "a file where a folder should be");
    const std::string fallback = WnGetDataFolder();
    EXPECT_TRUE(fallback.starts_with(folder / "Norvek-")) << fallback;
    struct stat status {};
    EXPECT_EQ(stat(fallback.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);

    chmod(fallback.c_str(), 0777);
    EXPECT_NE(WnGetDataFolder(), fallback) << "a folder that others can write is not private";
}

TEST(System, AScratchFileLivesInAPrivateFolderAndGoesWithIt) {
    const TestFolder folder;
    const TestEnvironment environment(folder);
    std::string path;
    {
        const WnScratchFile scratch;
        path = scratch.GetPath();
        EXPECT_TRUE(path.ends_with("/TEMP.GIF"));
        EXPECT_FALSE(fs::exists(path));
        EXPECT_EQ(fs::status(fs::path(path).parent_path()).permissions(), fs::perms::owner_all);
        WriteTestFile(path, "x");
    }
    EXPECT_FALSE(fs::exists(fs::path(path).parent_path()));
    const TestVariable missing("TMPDIR", folder / "none");
    EXPECT_THROW(WnScratchFile(), NvErrorCode);
}

} // namespace

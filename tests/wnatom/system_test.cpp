// The data folder and scratch files.

#include <sys/stat.h>

#include "tests/support/test.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

namespace {

namespace fs = std::filesystem;

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

} // namespace

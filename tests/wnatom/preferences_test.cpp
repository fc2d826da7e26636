// The preferences store: lookup order, writes to both roots, damaged files, totals of runs side by side.

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/test.h"
#include "wnatom/wnpref.h"

namespace {

class Preferences : public testing::Test {
protected:
    std::string GetMachineFile() const { return mFolder / "machine/Norvek/Parvigif/1.x.ini"; }
    std::string GetUserFile() const { return mFolder / "user/Norvek/Parvigif/1.x.ini"; }

    std::uint32_t Read(const char* inName, std::uint32_t inDefault) const {
        std::uint32_t value = 0;
        mPrefs.ReadDWordDefault(inName, value, inDefault);
        return value;
    }

    TestFolder mFolder;
    TestEnvironment mEnvironment{mFolder};
    WnPref mPrefs{"Parvigif", "1.x"};
};

TEST_F(Preferences, WritesGoToBothRootsAndSucceedWithOne) {
    EXPECT_TRUE(mPrefs.WriteDWord("OBACK", 4294967295u));
    EXPECT_EQ(ReadTestFile(GetMachineFile()), "OBACK=4294967295\n");
    EXPECT_EQ(ReadTestFile(GetUserFile()), "OBACK=4294967295\n");

    std::filesystem::remove_all(mFolder / "machine");
    WriteTestFile(mFolder / "machine", "a file where a folder should be");
    EXPECT_TRUE(mPrefs.WriteDWord("OBACK", 1));
    EXPECT_EQ(Read("OBACK", 9), 1u);

    std::filesystem::remove_all(mFolder / "user");
    WriteTestFile(mFolder / "user", "and here");
    EXPECT_FALSE(mPrefs.WriteDWord("OBACK", 0));
}

TEST_F(Preferences, ADamagedLineCostsOnlyItself) {
    for (const std::string line : {"LOG=", "LOG=1x", "LOG=-1", "LOG", "LOG=4294967296", "=5", "# LOG=5",
                                   "xLOG=5", "LOG =0x1", "\xff\x80"}) {
        WriteTestFile(GetUserFile(), line + "\nLOG = 3 \r\nBACKUP=0");
        EXPECT_EQ(Read("LOG", 9), 3u) << line;
        EXPECT_EQ(Read("BACKUP", 9), 0u) << line;
    }
    WriteTestFile(GetUserFile(), "# mine\nLOG=1\nnonsense\nBACKUP=0\n");
    mPrefs.WriteDWord("LOG", 0);
    EXPECT_EQ(ReadTestFile(GetUserFile()), "# mine\nnonsense\nBACKUP=0\nLOG=0\n");
}

TEST_F(Preferences, WhatIsNoPreferencesFileIsNeitherReadNorWrittenOver) {
    std::filesystem::create_directories(GetUserFile());
    EXPECT_EQ(Read("LOG", 9), 9u);
    WriteTestFile(GetMachineFile(), std::string((1 << 20) + 1, 'x'));
    EXPECT_FALSE(mPrefs.WriteDWord("LOG", 0));
    EXPECT_EQ(std::filesystem::file_size(GetMachineFile()), (1u << 20) + 1);
    EXPECT_EQ(mPrefs.FindOversized(), std::vector{GetMachineFile()});
}

TEST_F(Preferences, AdditionsOfManyProcessesAllCount) {
    WriteTestFile(GetUserFile(), "BYTESSAVED=4294967290\n"); // goes on in both roots, and wraps
    for (int i = 0; i < 4; ++i) {
        if (fork() == 0) {
            for (int j = 0; j < 25; ++j)
                mPrefs.AddToDWords(std::array{WnPrefNumber{"BYTESSAVED", 3}, WnPrefNumber{"FILES", 1}});
            _exit(0);
        }
    }
    while (wait(nullptr) > 0) {
    }
    EXPECT_EQ(Read("BYTESSAVED", 0), 3u * 4 * 25 - 6);
    EXPECT_EQ(Read("FILES", 0), 4u * 25);
    EXPECT_EQ(ReadTestFile(GetUserFile()), ReadTestFile(GetMachineFile()));
}

TEST_F(Preferences, RootsInOneFolderCountOnce) {
    const TestVariable user("XDG_CONFIG_HOME", mFolder / "machine/./");
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(mPrefs.AddToDWords(std::array{WnPrefNumber{"BYTESSAVED", 5}}));
    EXPECT_EQ(Read("BYTESSAVED", 0), 10u);
}

} // namespace

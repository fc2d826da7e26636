// The preferences store: lookup order, writes to both roots, damaged files, totals of runs side by side.

#include <array>
#include <vector>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/testfolder.h"
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

TEST_F(Preferences, MissingValuesGiveTheDefaultAndReadingMakesNoFile) {
    std::uint32_t value = 77;
    EXPECT_FALSE(mPrefs.ReadDWord("BACKUP", value));
    EXPECT_EQ(value, 77u);
    EXPECT_FALSE(mPrefs.ReadDWordDefault("BACKUP", value, 1));
    EXPECT_EQ(value, 1u);
    EXPECT_FALSE(std::filesystem::exists(mFolder / "user"));
}

TEST_F(Preferences, TheMachineWideValueIsReadFirst) {
    WriteTestFile(GetUserFile(), "LOG=1\nBACKUP=0\n");
    WriteTestFile(GetMachineFile(), "LOG=0\n");
    EXPECT_EQ(Read("LOG", 9), 0u);
    EXPECT_EQ(Read("BACKUP", 9), 0u) << "only the user's file has it";
}

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
    const std::vector<std::string> damaged = {
        "LOG=",    "LOG=yes",        "LOG=1x",   "LOG=-1",
        "LOG",     "LOG=4294967296", "=5",       std::string("\0\xff=\x80", 4),
        "# LOG=5", "xLOG=5",         "LOG =0x1", std::string(5000, 'L')};
    for (const std::string& line : damaged) {
        WriteTestFile(GetUserFile(), line + "\nLOG = 3 \r\nBACKUP=0");
        EXPECT_EQ(Read("LOG", 9), 3u) << line;
        EXPECT_EQ(Read("BACKUP", 9), 0u) << line;
    }
}

TEST_F(Preferences, WritingLeavesOtherLinesAlone) {
    WriteTestFile(GetUserFile(), "# mine\nLOG=1\nnonsense\nLOG=broken\nBACKUP=0\n");
    mPrefs.WriteDWord("LOG", 0);
    EXPECT_EQ(ReadTestFile(GetUserFile()), "# mine\nnonsense\nBACKUP=0\nLOG=0\n");
}

TEST_F(Preferences, WhatIsNoPreferencesFileIsNeitherReadNorWrittenOver) {
    std::filesystem::create_directories(GetUserFile());
    EXPECT_EQ(Read("LOG", 9), 9u);
    WriteTestFile(GetMachineFile(), std::string((1 << 20) + 1, 'x'));
    EXPECT_FALSE(mPrefs.WriteDWord("LOG", 0));
    EXPECT_EQ(std::filesystem::file_size(GetMachineFile()), (1u << 20) + 1);
}

TEST_F(Preferences, AnOverrideWinsAndIsNeverStored) {
    WriteTestFile(GetMachineFile(), "BACKUP=1\n");
    mPrefs.Override("BACKUP", 0);
    EXPECT_EQ(Read("BACKUP", 9), 0u);
    mPrefs.WriteDWord("LOG", 1);
    EXPECT_EQ(ReadTestFile(GetMachineFile()), "BACKUP=1\nLOG=1\n");
}

TEST_F(Preferences, TextIsKeptWhole) {
    const std::string text = "C:\\a = b; # \xc3\xa9";
    EXPECT_TRUE(mPrefs.WriteString("NAME", text.c_str(), text.size() + 1));
    std::array<char, 32> buffer{};
    EXPECT_TRUE(mPrefs.ReadString("NAME", buffer.data(), buffer.size()));
    EXPECT_EQ(buffer.data(), text);

    buffer[0] = '!';
    EXPECT_FALSE(mPrefs.ReadString("NAME", buffer.data(), text.size())) << "no room for the NUL";
    EXPECT_EQ(buffer[0], '!');
    EXPECT_FALSE(mPrefs.WriteString("NAME", "two\nlines", 9));
}

TEST_F(Preferences, AdditionsOfManyProcessesAllCount) {
    constexpr int processes = 4;
    constexpr int additions = 25;
    for (int i = 0; i < processes; ++i) {
        if (fork() == 0) {
            for (int j = 0; j < additions; ++j)
                mPrefs.AddToDWord("BYTESSAVED", 3);
            _exit(0);
        }
    }
    while (wait(nullptr) > 0) {
    }
    EXPECT_EQ(Read("BYTESSAVED", 0), 3u * processes * additions);
    EXPECT_EQ(ReadTestFile(GetUserFile()), ReadTestFile(GetMachineFile()));
}

TEST_F(Preferences, RootsInOneFolderCountOnce) {
    const TestVariable user("XDG_CONFIG_HOME", mFolder / "machine/./");
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(mPrefs.AddToDWord("BYTESSAVED", 5));
    EXPECT_EQ(Read("BYTESSAVED", 0), 10u);
}

TEST_F(Preferences, AdditionsWrapAndContinueAUsersTotalInTheMachineWideRoot) {
    WriteTestFile(GetUserFile(), "BYTESSAVED=4294967290\n");
    EXPECT_TRUE(mPrefs.AddToDWord("BYTESSAVED", 10));
    EXPECT_EQ(ReadTestFile(GetUserFile()), "BYTESSAVED=4\n");
    EXPECT_EQ(ReadTestFile(GetMachineFile()), "BYTESSAVED=4\n");
}

TEST(PreferencesDeath, AKeyPathHasItsLimit) {
    EXPECT_NO_FATAL_FAILURE(WnPref(std::string(1023, 'a').c_str()));
    EXPECT_DEATH(WnPref(std::string(1024, 'a').c_str()), "km_MaxKeyPath");
}

} // namespace

// The program on Windows: names, locked files, log, totals and preferences as that system has them.

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"
#include "tests/support/ownregistry_win.h"
#include "tests/support/programtest.h"

namespace {

using testing::HasSubstr;

class WindowsProgram : public ProgramTest {
protected:
    WindowsProgram() { DrawSamples(); }
    ~WindowsProgram() override { OwnRegistry::ForgetPreferences(); } // whoever comes next in this prefix
    std::size_t SizeOf(const std::string& inName) const { return ReadTestFile(mFolder / inName).size(); }
    bool Has(const std::string& inName) const {
        return GetFileAttributesW(NvWidePath(mFolder / inName).c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    void Copy(const std::string& inFrom, const std::string& inTo) const {
        CopyFileW(NvWidePath(mFolder / inFrom).c_str(), NvWidePath(mFolder / inTo).c_str(), TRUE);
    }
};

TEST_F(WindowsProgram, AFolderIsMadeSmallerWithBackupsLogAndTotals) {
    const std::size_t before = SizeOf("icon.gif");
    const ProgramResult result = mRunner.Run({"."});
    EXPECT_EQ(result.mStatus, 0) << result.mErr;
    EXPECT_THAT(result.mOut, HasSubstr("  ./icon.gif\n"));
    EXPECT_THAT(result.mOut, HasSubstr("  6 files: 6 made smaller\n"));
    EXPECT_LT(SizeOf("icon.gif"), before);
    EXPECT_EQ(SizeOf("icon.gif.BAK"), before);
    EXPECT_THAT(ReadTestFile(mRunner.GetOwnFolder() / "state/Norvek/PVGFLog.TXT"),
                HasSubstr("\\icon.gif\" \r\n     "));
    EXPECT_EQ(OwnRegistry::GetPreference("FILESPROCESSED"), 6u);
    EXPECT_GT(OwnRegistry::GetPreference("BYTESSAVED"), 10000u);
}

TEST_F(WindowsProgram, NamesOfAnyScriptAndLength) {
    const std::string name = "\xe6\x97\xa5 \xd0\xb6 \xf0\x9f\x90\xb1 '%.gif";
    Copy("icon.gif", name);
    const std::string deep = std::string(130, 'd') + "\\" + std::string(130, 'e');
    CreateDirectoryW(NvWidePath(mFolder / std::string(130, 'd')).c_str(), nullptr);
    CreateDirectoryW(NvWidePath(mFolder / deep).c_str(), nullptr);
    Copy("tiles.gif", deep + "\\t.gif");

    const ProgramResult result = mRunner.Run({name, deep});
    EXPECT_EQ(result.mStatus, 0) << result.mErr;
    EXPECT_THAT(result.mOut, HasSubstr("  " + name + "\n"));
    EXPECT_TRUE(Has(name + ".BAK"));
    EXPECT_THAT(result.mOut, HasSubstr("2 files: 2 made smaller"));
    EXPECT_TRUE(Has(deep + "\\t.gif.BAK"));

    const std::string folder = "\xd0\xb6\\\xe6\x97\xa5";
    EXPECT_EQ(mRunner.Run({"-o", folder, "ball.gif"}).mErr, "");
    EXPECT_TRUE(Has(folder + "\\ball.gif"));
    WriteTestFile(mFolder / "list", "sunset.gif\r\nspinner.gif\r\n");
    mRunner.mInput = "list";
    EXPECT_THAT(mRunner.Run({"-n", "--files-from=-"}).mOut, HasSubstr("  2 files: 2 could"));
}

TEST_F(WindowsProgram, WhatOthersHoldOrProtectStaysAsItIs) {
    const std::string busy = ReadTestFile(mFolder / "icon.gif");
    SetFileAttributesW(NvWiden(mFolder / "tiles.gif").c_str(), FILE_ATTRIBUTE_READONLY);
    const HANDLE viewer = CreateFileW(NvWiden(mFolder / "icon.gif").c_str(), GENERIC_READ, FILE_SHARE_READ,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    const ProgramResult result = mRunner.Run({"icon.gif", "tiles.gif", "ball.gif", "none.gif"});
    CloseHandle(viewer);
    SetFileAttributesW(NvWiden(mFolder / "tiles.gif").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_THAT(result.mErr, HasSubstr("parvigif: icon.gif: another program has it open (code 1)\n"));
    EXPECT_THAT(result.mErr, HasSubstr("parvigif: tiles.gif: no permission to replace it"));
    EXPECT_THAT(result.mErr, HasSubstr("parvigif: none.gif: no such file or folder (code 10)\n"));
    EXPECT_EQ(ReadTestFile(mFolder / "icon.gif"), busy);
    EXPECT_FALSE(Has("icon.gif.BAK"));
    EXPECT_FALSE(Has("tiles.gif.BAK"));
    EXPECT_TRUE(Has("ball.gif.BAK")) << "the rest of the batch goes on";
}

} // namespace

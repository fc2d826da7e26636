// Going back to the originals, and what is kept between runs: preferences, totals, the log.

#include "tests/support/programtest.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
namespace fs = std::filesystem;

class Store : public ProgramTest {
protected:
    Store() { DrawSamples(); }
    std::string GetLog() const { return ReadTestFile(mRunner.GetOwnFolder() / "state/Norvek/PVGFLog.TXT"); }
    void ExpectNotRestored(const std::string& inName, const std::string& inText) {
        ExpectRefusal({"--restore", inName}, inName + ": " + inText);
    }
};

TEST_F(Store, RestoringPutsTheOriginalBackAndKeepsTheBackup) {
    const std::string icon = Read("icon.gif"), ball = Read("ball.gif");
    fs::create_directory(mFolder / "vault");
    fs::rename(mFolder / "icon.gif", mFolder / "vault/icon.gif");
    fs::create_symlink("vault/icon.gif", mFolder / "link.gif");
    mRunner.Run({"link.gif", "ball.gif"});
    fs::permissions(mFolder / "vault/icon.gif", fs::perms{0640});
    EXPECT_NE(Read("vault/icon.gif"), icon);

    const ProgramResult result = mRunner.Run({"--restore", "link.gif", "none.gif"});
    EXPECT_EQ(result.mOut, "restored  link.gif\n");
    EXPECT_EQ(result.mErr, "parvigif: none.gif: no such file or folder (code 10)\n");
    EXPECT_EQ(result.mStatus, 1);
    EXPECT_TRUE(fs::is_symlink(mFolder / "link.gif"));
    EXPECT_EQ(Read("vault/icon.gif"), icon);
    EXPECT_EQ(Read("link.gif.BAK"), icon);
    EXPECT_EQ(fs::status(mFolder / "vault/icon.gif").permissions(), fs::perms{0640});
    EXPECT_THAT(GetLog(), EndsWith("/link.gif\" \n    Restored from its backup.\n"));

    fs::remove(mFolder / "ball.gif"); // of a folder: what has a backup, there or missing
    const ProgramResult all = mRunner.Run({"--restore", "."});
    EXPECT_EQ(all.mOut, "restored  ./ball.gif\nrestored  ./link.gif\n");
    EXPECT_EQ(all.mErr, "");
    EXPECT_EQ(Read("ball.gif"), ball);
    EXPECT_EQ(mRunner.Run({"--restore", "ball.gif.BAK"}).mOut, "restored  ball.gif\n");
}

TEST_F(Store, WhatSomebodyMadeOfAPictureOrSavedUnderItsNameIsKept) {
    const std::string icon = Read("icon.gif"), ball = Read("ball.gif");
    const auto time = fs::last_write_time(mFolder / "icon.gif") - std::chrono::hours(1000);
    fs::last_write_time(mFolder / "icon.gif", time);
    mRunner.Run({"icon.gif"});
    Write("icon.gif", ball); // another picture
    EXPECT_EQ(
        mRunner.Run({"icon.gif"}).mErr,
        "parvigif: icon.gif: its original is kept as icon.gif.2.BAK, since the backup that was there may be "
        "of another picture\n");
    EXPECT_EQ(Read("icon.gif.BAK"), icon);
    EXPECT_EQ(Read("icon.gif.2.BAK"), ball);

    const std::string smaller = Read("icon.gif");
    EXPECT_EQ(mRunner.Run({"--restore", "-n", "icon.gif"}).mOut, "would restore  icon.gif\n");
    EXPECT_EQ(Read("icon.gif"), smaller);
    mRunner.Run({"--restore", "icon.gif"});
    EXPECT_EQ(Read("icon.gif"), ball) << "its own backup";
    fs::remove(mFolder / "icon.gif");
    mRunner.Run({"--restore", "icon.gif.BAK"});
    EXPECT_EQ(Read("icon.gif"), icon) << "the one that was named";
    EXPECT_EQ(fs::last_write_time(mFolder / "icon.gif"), time);

    const std::string edited = icon.substr(0, icon.size() - 1) + "!\xfe\x03" + "cat" + '\0' + ";";
    Write("icon.gif", edited);
    EXPECT_THAT(mRunner.Run({"--restore", "--json", "icon.gif.BAK"}).mOut,
                HasSubstr(R"("status":"restored","backup":"icon.gif.BAK","kept":"icon.gif.3.BAK")"));
    EXPECT_EQ(Read("icon.gif"), icon);
    EXPECT_EQ(Read("icon.gif.3.BAK"), edited);
}

TEST_F(Store, WhatCannotBeRestoredStaysAsItIs) {
    ExpectNotRestored("icon.gif", "no backup: there is no icon.gif.BAK (code 10)");
    const std::string ball = Read("ball.gif");
    Write("icon.gif.BAK", ball);
    ExpectNotRestored("icon.gif", "not restored: it is another picture than its backup, of another size or "
                                  "number of frames; move it away first");
    for (const std::size_t size : {std::size_t{0}, std::size_t{400}, ball.size() - 2}) {
        Write("ball.gif.BAK", ball.substr(0, size));
        ExpectNotRestored("ball.gif", "not restored: the file ends too early (code 18)");
    }
    fs::create_directory(mFolder / "tiles.gif.BAK");
    ExpectNotRestored("tiles.gif", "not restored: neither a file nor a folder (code 12)");

    fs::copy_file(mFolder / "sunset.gif", mFolder / "sunset.gif.BAK");
    fs::permissions(mFolder / "sunset.gif", fs::perms::owner_read);
    ExpectNotRestored(
        "sunset.gif",
        "not restored: no permission to replace it: the file or its folder is read-only (code 5)");
    fs::permissions(mFolder / "sunset.gif", fs::perms::all);
    EXPECT_FALSE(fs::exists(mRunner.GetOwnFolder() / "state/Norvek/PVGFLog.TXT"));
}

TEST_F(Store, PreferencesShowTheirOriginAndASetOneHolds) {
    const std::string user = mRunner.GetOwnFolder() / "user/Norvek/Parvigif/1.x.ini";
    WriteTestFile(user, "BACKUP=\n\xff\xfe=\n=\nOBACK=many\nLOG=0\nMINE=7");
    WriteTestFile(mRunner.GetOwnFolder() / "machine/Norvek/Parvigif/1.x.ini", "LOGALL=0\n");
    const ProgramResult result = mRunner.Run({"--set", "BACKUP=0", "--set=BYTESSAVED=5", "--preferences"});
    EXPECT_EQ(result.mErr, "");
    EXPECT_THAT(result.mOut, HasSubstr("BACKUP=0                   machine-wide  keep"));
    EXPECT_THAT(result.mOut, HasSubstr("OBACK=0                    built-in "));
    EXPECT_THAT(result.mOut, HasSubstr("LOG=0                      user "));
    EXPECT_THAT(result.mOut, HasSubstr("LOGALL=0                   machine-wide "));
    EXPECT_EQ(ReadTestFile(user), "\xff\xfe=\n=\nOBACK=many\nLOG=0\nMINE=7\nBACKUP=0\nBYTESSAVED=5\n");
    EXPECT_EQ(mRunner.Run({"--totals"}).mOut, "0 Files processed to date.\n5 bytes saved\n");
    mRunner.Run({"icon.gif"});
    EXPECT_FALSE(Has("icon.gif.BAK"));

    for (const char* root : {"machine", "user"}) { // a folder where the file should be
        fs::remove_all(mRunner.GetOwnFolder() / root);
        fs::create_directories(mRunner.GetOwnFolder() / (root + std::string("/Norvek/Parvigif/1.x.ini/x")));
    }
    const ProgramResult lost = mRunner.Run({"--set", "LOG=1"});
    EXPECT_EQ(lost.mErr, "parvigif: LOG: the preferences cannot be written\n");
    EXPECT_EQ(lost.mStatus, 1);
}

TEST_F(Store, TheLogIsShownAndCleared) {
    EXPECT_EQ(mRunner.Run({"--show-log"}).mErr, "parvigif: there is no results log yet\n");
    fs::rename(mFolder / "icon.gif", mFolder / "\x1b[31m.gif");
    mRunner.Run({"\x1b[31m.gif"});
    EXPECT_THAT(mRunner.Run({"--show-log"}).mOut, HasSubstr("/\\x1b[31m.gif\" \n     "));
    EXPECT_EQ(mRunner.Run({"--clear-log"}).mStatus, 0);
    EXPECT_EQ(GetLog(), "");
    EXPECT_THAT(mRunner.Run({"--totals"}).mOut, testing::StartsWith("1 Files processed to date.\n"));
}

} // namespace

// The backup beside a file that is about to be replaced.

#include <sys/stat.h>

#include "tests/batch/batchtest.h"
#include "win/batch/mizerbackups.h"

namespace {

namespace fs = std::filesystem;
using Work = MizerOrigins::Work;

class BackupTest : public BatchTest {
protected:
    /** @return the name of the backup; "changed" when there is none */
    std::string Backup(bool inOverwrites = false) {
        const auto kept =
            mBackups.BackupFile(mFile.c_str(), WnGetFileState(mFile.c_str()).value(), inOverwrites);
        return kept ? fs::path(kept->mPath).filename().string() : "changed";
    }

    TestFolder mData;
    MizerBackups mBackups{{[&] { return mData.GetPath(); }, nullptr}};
    std::string mFile = WriteTestFile(mFolder / "pic.gif", "original");
    std::string mBackup = mFolder / "pic.gif.BAK";
};

TEST_F(BackupTest, TheWholeNameGetsTheExtensionAndPermissionsAndTimesStay) {
    chmod(mFile.c_str(), 0600);
    fs::last_write_time(mFile, fs::last_write_time(mFile) - std::chrono::hours(1000));
    EXPECT_EQ(Backup(), "pic.gif.BAK");
    EXPECT_EQ(fs::status(mBackup).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::last_write_time(mBackup), fs::last_write_time(mFile));
}

TEST_F(BackupTest, OnlyABackupThatIsKnownToBeItsOwnCounts) {
    const std::pair<const char*, std::function<void()>> strangers[] = {
        {"of another picture", [&] { WriteTestFile(mBackup, "oldest"); }},
        {"empty", [&] { WriteTestFile(mBackup, ""); }},
        {"the picture itself", [&] { fs::create_symlink("pic.gif", mBackup); }},
        {"the same", [&] { fs::create_hard_link(mFile, mBackup); }},
    };
    for (const auto& [what, make] : strangers) {
        make();
        const std::string there = ReadTestFile(mBackup);
        for (int run = 0; run < 2; ++run)
            EXPECT_EQ(Backup(), "pic.gif.2.BAK") << what;
        EXPECT_EQ(ReadTestFile(mBackup), there) << what;
        EXPECT_EQ(ReadTestFile(mFolder / "pic.gif.2.BAK"), "original") << what;
        fs::remove(mBackup);
        fs::remove(mFolder / "pic.gif.2.BAK");
    }
    WriteTestFile(mBackup, "oldest");
    mBackups.GetOrigins().Add(MizerReadContent(mFile.c_str()), MizerReadContent(mBackup.c_str()),
                              Work::km_Done);
    EXPECT_EQ(Backup(), "pic.gif.BAK");
    WriteTestFile(mFile, "another");
    EXPECT_EQ(Backup(), "pic.gif.2.BAK");
}

TEST_F(BackupTest, OverwritingSparesWhatARunThatEndedEarlyWorkedFrom) {
    WriteTestFile(mBackup, "oldest");
    const MizerContent oldest = MizerReadContent(mBackup.c_str());
    for (const auto& [work, left] : {std::pair(Work::km_Begun, "oldest"), {Work::km_Done, "original"}}) {
        mBackups.GetOrigins().Add(MizerReadContent(mFile.c_str()), oldest, work);
        EXPECT_EQ(Backup(true), "pic.gif.BAK");
        EXPECT_EQ(ReadTestFile(mBackup), left);
    }
}

TEST_F(BackupTest, OfAFileThatWasChangedNothingIsKept) {
    const auto state = WnGetFileState(mFile.c_str()).value();
    chmod(mFile.c_str(), 0640);
    EXPECT_FALSE(mBackups.BackupFile(mFile.c_str(), state));
    EXPECT_FALSE(fs::exists(mBackup));
}

TEST_F(BackupTest, WhatIsNoRegularFileAtTheBackupsNameIsAnErrorBeforeAnythingIsWritten) {
    for (const bool overwrites : {false, true}) {
        fs::create_directory(mBackup);
        EXPECT_EQ(CodeOf([&] { Backup(overwrites); }), NvErrorCode::km_Failure);
        fs::remove(mBackup);
        fs::create_symlink("nothing", mBackup);
        EXPECT_EQ(CodeOf([&] { Backup(overwrites); }), NvErrorCode::km_Failure);
        EXPECT_FALSE(fs::exists(mFolder / "nothing"));
        fs::remove(mBackup);
    }
}

TEST_F(BackupTest, ALinkedBackupStaysALink) {
    WriteTestFile(mFolder / "vault", "old");
    fs::create_symlink("vault", mBackup);
    EXPECT_EQ(Backup(true), "pic.gif.BAK");
    EXPECT_TRUE(fs::is_symlink(mBackup));
    EXPECT_EQ(ReadTestFile(mFolder / "vault"), "original");
}

TEST_F(BackupTest, NamesOfBackupsLeadToTheirPictures) {
    EXPECT_EQ(MizerPictureOfBackup("a/cat.gif.BAK"), "a/cat.gif");
    EXPECT_EQ(MizerPictureOfBackup("cat.GIF.12.BAK"), "cat.GIF");
    for (const char* none :
         {"cat.gif", "cat.BAK", "cat.gif.1.BAK", "cat.gif.02.BAK", "cat.gif.x.BAK", ".BAK"})
        EXPECT_EQ(MizerPictureOfBackup(none), "") << none;
}

} // namespace

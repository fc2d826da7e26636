// The backup beside a file that is about to be replaced.

#include <sys/stat.h>

#include "tests/batch/batchtest.h"
#include "tests/support/codeof.h"

namespace {

namespace fs = std::filesystem;

class BackupTest : public BatchTest {
protected:
    std::uint32_t Backup() {
        return CodeOf([&] { MizerBackups().BackupFile(mFile.c_str(), MizerSettings::Read(mPrefs)); });
    }

    std::string mFile = WriteTestFile(mFolder / "pic.gif", "original");
    std::string mBackup = mFolder / "pic.gif.BAK";
};

TEST_F(BackupTest, TheWholeNameGetsTheExtensionAndThePermissionsStay) {
    chmod(mFile.c_str(), 0600);
    EXPECT_EQ(Backup(), 0u);
    EXPECT_EQ(fs::status(mBackup).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(BackupTest, TheFirstBackupStaysUnlessOverwritingIsOn) {
    WriteTestFile(mBackup, "oldest");
    EXPECT_EQ(Backup(), 0u);
    EXPECT_EQ(ReadTestFile(mBackup), "oldest");
    mPrefs.Override("OBACK", 1);
    EXPECT_EQ(Backup(), 0u);
    EXPECT_EQ(ReadTestFile(mBackup), "original");
}

TEST_F(BackupTest, WhatIsNoRegularFileAtTheBackupsNameIsAnErrorBeforeAnythingIsWritten) {
    for (const std::uint32_t overwrite : {0u, 1u}) {
        mPrefs.Override("OBACK", overwrite);
        fs::create_directory(mBackup);
        EXPECT_EQ(Backup(), NvErrorCode::km_Failure);
        fs::remove(mBackup);
        fs::create_symlink("nothing", mBackup);
        EXPECT_EQ(Backup(), NvErrorCode::km_Failure);
        EXPECT_FALSE(fs::exists(mFolder / "nothing"));
        fs::remove(mBackup);
    }
}

TEST_F(BackupTest, ALinkedBackupStaysALink) {
    WriteTestFile(mFolder / "vault", "old");
    fs::create_symlink("vault", mBackup);
    mPrefs.Override("OBACK", 1);
    EXPECT_EQ(Backup(), 0u);
    EXPECT_TRUE(fs::is_symlink(mBackup));
    EXPECT_EQ(ReadTestFile(mFolder / "vault"), "original");
}

} // namespace

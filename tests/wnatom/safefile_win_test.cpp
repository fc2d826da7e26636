// Replacing a file in one step on Windows: the target is whole at every moment, and keeps what it carried.

#include <thread>

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"
#include "tests/support/test.h"
#include "wnatom/wnsafefile.h"

namespace {

namespace fs = std::filesystem;

class SafeFile : public testing::Test {
protected:
    static HANDLE OpenFor(const std::string& inPath, DWORD inShare) {
        return CreateFileW(NvWidePath(inPath).c_str(), GENERIC_READ, inShare, nullptr, OPEN_EXISTING, 0,
                           nullptr);
    }
    std::ptrdiff_t CountEntries() const {
        return std::distance(fs::directory_iterator(mFolder.GetPath()), fs::directory_iterator());
    }

    TestFolder mFolder;
    std::string mTarget = WriteTestFile(mFolder / "\xc3\xa9\xe6\x97\xa5.gif", "old");
};

TEST_F(SafeFile, TheTargetStaysOldUntilTheCommitAndKeepsItsAttributes) {
    SetFileAttributesW(NvWiden(mTarget).c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    {
        WnSafeFile file(mTarget.c_str());
        WriteTestFile(file.GetTemporaryPath(), "new");
        EXPECT_EQ(ReadTestFile(mTarget), "old");
        file.Commit();
        EXPECT_EQ(ReadTestFile(mTarget), "new");
    }
    EXPECT_NE(GetFileAttributesW(NvWiden(mTarget).c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
    { const WnSafeFile abandoned(mTarget.c_str()); }
    EXPECT_EQ(CountEntries(), 1);
}

TEST_F(SafeFile, AnExistingTargetCanBeKept) {
    WnSafeFile file(mTarget.c_str());
    EXPECT_FALSE(file.CommitUnlessPresent());
    EXPECT_EQ(ReadTestFile(mTarget), "old");
    WnSafeFile other((mFolder / "new.gif").c_str());
    WriteTestFile(other.GetTemporaryPath(), "new");
    EXPECT_TRUE(other.CommitUnlessPresent());
    EXPECT_EQ(ReadTestFile(mFolder / "new.gif"), "new");
}

TEST_F(SafeFile, AReaderThatLetsGoSoonIsWaitedForOthersAreAnError) {
    WnSafeFile file(mTarget.c_str());
    WriteTestFile(file.GetTemporaryPath(), "new");
    const HANDLE reader = OpenFor(mTarget, FILE_SHARE_READ);
    EXPECT_EQ(CodeOf([&] { file.Commit(); }) != NvErrorCode::km_NoError, true);
    EXPECT_EQ(ReadTestFile(mTarget), "old");
    std::thread letGo([&] {
        Sleep(20); // much less than is waited
        CloseHandle(reader);
    });
    EXPECT_EQ(CodeOf([&] { file.Commit(); }), NvErrorCode::km_NoError);
    letGo.join();
    EXPECT_EQ(ReadTestFile(mTarget), "new");
}

TEST_F(SafeFile, OnlyLeftoversOfDeadRunsAreRemoved) {
    WriteTestFile(mFolder / ".parvigif-dead01.tmp", "");
    WriteTestFile(mFolder / ".parvigif-seven07.tmp", "one character too many");
    fs::create_directory(mFolder / ".parvigif-folder.tmp");
    const WnSafeFile living(mTarget.c_str());
    WnRemoveLeftovers(mFolder.GetPath().c_str());
    EXPECT_FALSE(fs::exists(mFolder / ".parvigif-dead01.tmp"));
    EXPECT_TRUE(fs::exists(living.GetTemporaryPath()));
    EXPECT_EQ(CountEntries(), 4);
}

} // namespace

// Replacing a file in one step: the target is whole at every moment, and keeps what it carried.

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/support/test.h"
#include "wnatom/wnsafefile.h"

namespace {

namespace fs = std::filesystem;

mode_t GetMode(const std::string& inPath) {
    struct stat status {};
    EXPECT_EQ(stat(inPath.c_str(), &status), 0);
    return status.st_mode & 07777;
}

std::size_t CountEntries(const std::string& inFolder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(inFolder), fs::directory_iterator()));
}

class SafeFile : public testing::Test {
protected:
    TestFolder mFolder;
    std::string mTarget = WriteTestFile(mFolder / "pic.gif", "old");
};

TEST_F(SafeFile, TheTargetStaysOldUntilTheCommitAndNothingElseStays) {
    {
        WnSafeFile file(mTarget.c_str());
        WriteTestFile(file.GetTemporaryPath(), "new");
        EXPECT_EQ(ReadTestFile(mTarget), "old");
        file.Commit();
        EXPECT_EQ(ReadTestFile(mTarget), "new");
    }
    { const WnSafeFile abandoned(mTarget.c_str()); }
    EXPECT_EQ(CountEntries(mFolder.GetPath()), 1u);
}

TEST_F(SafeFile, OnlyTheFileThatWasSeenIsReplaced) {
    const fs::path target = mTarget;
    const auto time = fs::last_write_time(target);
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"saved in place, as long and as old",
         [&] {
             WriteTestFile(mTarget, "sav");
             fs::last_write_time(target, time);
         }},
        {"another renamed over it", [&] { fs::rename(WriteTestFile(mFolder / "other", "other"), target); }},
        {"deleted", [&] { fs::remove(target); }},
        {"a link to itself, moved away",
         [&] {
             fs::rename(target, mFolder / "moved");
             fs::create_symlink("moved", target);
         }},
    };
    for (const auto& [what, change] : changes) {
        fs::remove(target);
        WriteTestFile(mTarget, "old");
        fs::last_write_time(target, time);
        const auto seen = WnGetFileState(mTarget.c_str()).value();
        WnSafeFile file(mTarget.c_str());
        file.Write("new", 3);
        change();
        const std::string left = fs::exists(target) ? ReadTestFile(mTarget) : "none";
        EXPECT_FALSE(file.CommitOver(seen)) << what;
        EXPECT_EQ(fs::exists(target) ? ReadTestFile(mTarget) : "none", left) << what;
    }
    fs::remove(target);
    WriteTestFile(mTarget, "old");
    fs::create_symlink("pic.gif", mFolder / "link.gif");
    WnSafeFile file((mFolder / "link.gif").c_str());
    file.Write("new", 3);
    const auto placed = file.CommitOver(WnGetFileState(mTarget.c_str()).value());
    EXPECT_TRUE(placed && placed == WnGetFileState(mTarget.c_str()));
    EXPECT_EQ(ReadTestFile(mFolder / "link.gif"), "new");
    EXPECT_EQ(CountEntries(mFolder.GetPath()), 3u) << "picture, link, what was moved away";
}

TEST_F(SafeFile, AnotherFileAtTheTemporaryNameIsNeitherWrittenNorUsed) {
    const auto seen = WnGetFileState(mTarget.c_str()).value();
    const std::string victim = WriteTestFile(mFolder / "victim", "mine");
    WnSafeFile file(mTarget.c_str());
    fs::remove(file.GetTemporaryPath());
    fs::create_symlink("victim", file.GetTemporaryPath());
    file.Write("new", 3);
    EXPECT_FALSE(file.CommitOver(seen));
    EXPECT_EQ(ReadTestFile(victim) + ReadTestFile(mTarget), "mineold");
}

TEST_F(SafeFile, PermissionsAndTagsAreKept) {
    chmod(mTarget.c_str(), 0604);
    const bool tagged = setxattr(mTarget.c_str(), "user.tag", "cat", 3, 0) == 0;
    WnSafeFile file(mTarget.c_str());
    EXPECT_EQ(GetMode(file.GetTemporaryPath()), 0600u) << "nobody reads it before its permissions are known";
    file.Commit();
    EXPECT_EQ(GetMode(mTarget), 0604u);
    if (tagged) {
        char value[4] = {};
        EXPECT_EQ(getxattr(mTarget.c_str(), "user.tag", value, 3), 3);
        EXPECT_STREQ(value, "cat");
    }
}

TEST_F(SafeFile, AnExistingTargetCanBeKept) {
    WnSafeFile file(mTarget.c_str());
    EXPECT_FALSE(file.CommitUnlessPresent());
    EXPECT_EQ(ReadTestFile(mTarget), "old");
}

TEST_F(SafeFile, ReadOnlyCountsForTheSuperuserToo) {
    EXPECT_EQ(CodeOf([&] { WnCheckReplaceable(mTarget.c_str()); }), NvErrorCode::km_NoError);
    chmod(mTarget.c_str(), 0444);
    EXPECT_EQ(CodeOf([&] { WnCheckReplaceable(mTarget.c_str()); }), NvErrorCode::km_PermissionDenied);
    chmod(mTarget.c_str(), 0644);
    chmod(mFolder.GetPath().c_str(), 0555);
    EXPECT_EQ(CodeOf([&] { WnCheckReplaceable(mTarget.c_str()); }), NvErrorCode::km_PermissionDenied);
    chmod(mFolder.GetPath().c_str(), 0755);
    EXPECT_EQ(CodeOf([&] { WnCheckReplaceable((mFolder / "none").c_str()); }), NvErrorCode::km_FileNotFound);
}

TEST_F(SafeFile, OnlyLeftoversOfDeadRunsAreRemoved) {
    WriteTestFile(mFolder / ".parvigif-dead01.tmp", "");
    WriteTestFile(mFolder / ".parvigif-seven07.tmp", "one character too many");
    WriteTestFile(mFolder / ".parvigif-notes.txt", "");
    fs::create_symlink("pic.gif", mFolder / ".parvigif-link01.tmp");
    fs::create_directory(mFolder / ".parvigif-folder.tmp");
    const WnSafeFile living(mTarget.c_str());

    WnRemoveLeftovers(mFolder.GetPath().c_str());
    EXPECT_FALSE(fs::exists(mFolder / ".parvigif-dead01.tmp"));
    EXPECT_TRUE(fs::exists(living.GetTemporaryPath()));
    EXPECT_EQ(CountEntries(mFolder.GetPath()), 6u);
}

} // namespace

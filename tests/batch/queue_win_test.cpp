// What names mean on Windows: either separator, drives, one file in whatever case.

#include "tests/batch/batchtest.h"

namespace {

using testing::ElementsAre;

class NameTest : public BatchTest {
protected:
    MizerBrain::Named Add(const std::string& inName) { return mBrain->AddNameToQueue(inName.c_str()); }
    std::vector<std::string> Run() {
        mBrain->ProcessQueue();
        return std::exchange(mBrain->mOptimized, {});
    }
};

TEST_F(NameTest, FoldersAndPatternsTakeEitherSeparator) {
    for (const char* name : {"a.gif", "b.gif", "a.gif.BAK", "notes.txt"})
        WriteTestFile(mFolder / (std::string("pics/") + name), "x");
    for (const char* name : {"\\pics", "/pics/", "\\pics\\", "\\pics\\?.gif", "/pics/*.GIF"}) {
        EXPECT_EQ(Add(mFolder.GetPath() + name), MizerBrain::Named::km_Queued) << name;
        EXPECT_THAT(Run(), ElementsAre("a.gif", "b.gif")) << name;
    }
    EXPECT_EQ(Add(mFolder / "*.png"), MizerBrain::Named::km_NoGIFs);
    EXPECT_EQ(CodeOf([&] { Add(mFolder / "none.gif"); }), NvErrorCode::km_FileNotFound);
}

TEST_F(NameTest, AFileIsQueuedOnceInWhateverCase) {
    WriteTestFile(mFolder / "pics/a.gif", "x");
    EXPECT_EQ(Add(mFolder / "pics\\a.gif"), MizerBrain::Named::km_Queued);
    EXPECT_EQ(Add(mFolder / "PICS/A.GIF"), MizerBrain::Named::km_AlreadyQueued);
    EXPECT_EQ(Run().size(), 1u);
}

TEST_F(NameTest, ADriveWithoutASeparatorIsItsCurrentFolder) {
    WriteTestFile(mFolder / "a.gif", "x");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(mFolder.GetPath());
    EXPECT_EQ(Add(mFolder.GetPath().substr(0, 2) + "*.gif"), MizerBrain::Named::km_Queued);
    EXPECT_EQ(Add("*.gif"), MizerBrain::Named::km_Queued) << "the same once more";
    EXPECT_EQ(Run().size(), 1u);
    std::filesystem::current_path(before);
}

} // namespace

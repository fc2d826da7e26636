// Running a batch: which files are worked on, errors, cancel, re-entry.

#include "tests/batch/batchtest.h"
#include "win/batch/mizerdelivery.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ProcessTest = BatchTest;

std::vector<MizerStatus> StatusesOf(const std::vector<MizerFileResult>& inResults) {
    std::vector<MizerStatus> statuses;
    for (const MizerFileResult& result : inResults)
        statuses.push_back(result.mStatus);
    return statuses;
}

NvErrorCode CatchFrom(MizerBrain& ioBrain) {
    try {
        ioBrain.ProcessQueue();
    } catch (const NvErrorCode& error) {
        return error;
    }
    return NvErrorCode(0, "", 0);
}

std::string SourceOf(const NvErrorCode& inError) {
    return std::string(inError.GetFileName() + 1, inError.GetFileName() + 1 + inError.GetFileName()[0]);
}

TEST_F(ProcessTest, AFileThatCannotBeMeasuredFailsAndTheBatchGoesOn) {
    const std::string gone = Queue("gone.gif", 1);
    std::filesystem::resize_file(Queue("huge.gif", 1), std::uintmax_t{1} << 31); // sparse
    Queue("b.gif", 1);
    std::filesystem::remove(gone);
    mBrain->ProcessQueue();
    EXPECT_THAT(mBrain->mOptimized, ElementsAre("b.gif"));
    EXPECT_THAT(StatusesOf(mShell.mResults),
                ElementsAre(MizerStatus::km_Failed, MizerStatus::km_Failed, MizerStatus::km_Unchanged));
    EXPECT_EQ(mShell.mResults[0].mError->GetCode(), NvErrorCode::km_FileNotFound);
    EXPECT_EQ(mShell.mResults[1].mError->GetCode(), NvErrorCode::km_OutOfRange);
}

TEST_F(ProcessTest, AnErrorLeavesTheRestQueued) {
    for (const char* name : {"a.gif", "b.gif", "c.gif"})
        Queue(name, 1);
    mBrain->mActions["b.gif"] = [] { NvThrow(NvErrorCode::km_DiskFull); };
    EXPECT_EQ(CatchFrom(*mBrain).GetCode(), NvErrorCode::km_DiskFull);
    EXPECT_FALSE(mBrain->IsBusy());
    EXPECT_EQ(mShell.mCommands, "+-");
    mBrain->ProcessQueue();
    EXPECT_THAT(mBrain->mOptimized, ElementsAre("a.gif", "b.gif", "c.gif"));
    EXPECT_THAT(StatusesOf(mShell.mResults),
                ElementsAre(MizerStatus::km_Unchanged, MizerStatus::km_Failed, MizerStatus::km_Unchanged));
    EXPECT_EQ(mShell.mCommands, "+-+-");
}

TEST_F(ProcessTest, CancelInAFileLetsItFinishAndEmptiesTheQueue) {
    for (const char* name : {"1.gif", "2.gif", "3.gif", "4.gif"})
        Queue(name, 10);
    mBrain->mNewSizes["3.gif"] = 5;
    mBrain->mActions["3.gif"] = [this] { mBrain->Cancel(); };
    const NvErrorCode error = CatchFrom(*mBrain);
    EXPECT_EQ(error.GetCode(), NvErrorCode::km_Cancelled);
    EXPECT_EQ(SourceOf(error), "win/mizerbrain");
    EXPECT_EQ(error.GetLine(), 612u);
    EXPECT_THAT(mBrain->mOptimized, ElementsAre("1.gif", "2.gif", "3.gif"));
    EXPECT_EQ(mShell.mResults.back().mStatus, MizerStatus::km_Smaller);

    mBrain->ProcessQueue();
    EXPECT_EQ(mBrain->mOptimized.size(), 3u) << "nothing was left";
    Queue("11.gif", 1);
    mBrain->ProcessQueue();
    EXPECT_EQ(mBrain->mOptimized.size(), 4u) << "and the request is forgotten";
}

TEST_F(ProcessTest, CancelJustBeforeAFileAbandonsIt) {
    for (const char* name : {"a.gif", "b.gif", "c.gif"})
        Queue(name, 1);
    mShell.mCancelAtPump = 3; // before a, after a, before b
    const NvErrorCode error = CatchFrom(*mBrain);
    EXPECT_EQ(error.GetCode(), NvErrorCode::km_Cancelled);
    EXPECT_EQ(SourceOf(error), "win/mizerbrain");
    EXPECT_EQ(error.GetLine(), 281u);
    EXPECT_THAT(mBrain->mOptimized, ElementsAre("a.gif"));
    EXPECT_EQ(mShell.mResults.back().mStatus, MizerStatus::km_Cancelled);
}

TEST_F(ProcessTest, CancelWinsOverAnErrorAndOverTheEndOfTheQueue) {
    Queue("a.gif", 1);
    Queue("b.gif", 1);
    mBrain->mActions["a.gif"] = [this] {
        mBrain->Cancel();
        NvThrow(NvErrorCode::km_DiskFull);
    };
    EXPECT_EQ(CatchFrom(*mBrain).GetCode(), NvErrorCode::km_Cancelled);
    EXPECT_EQ(mShell.mResults.back().mStatus, MizerStatus::km_Failed);
    EXPECT_EQ(CatchFrom(*mBrain).GetCode(), 0u) << "queue empty, flag clear";

    Queue("last.gif", 1);
    mBrain->mActions["last.gif"] = [this] { mBrain->Cancel(); };
    EXPECT_EQ(CatchFrom(*mBrain).GetLine(), 612u);
    EXPECT_EQ(mShell.mCommands, "+-+-") << "the empty run in between enabled nothing";
}

TEST_F(ProcessTest, ACommandDuringAPumpStartsNoSecondBatch) {
    Queue("a.gif", 1);
    int depth = 0;
    mShell.mOnPump = [&] {
        EXPECT_TRUE(mBrain->IsBusy());
        EXPECT_LE(++depth, 1);
        mBrain->ProcessQueue();
        --depth;
    };
    mBrain->ProcessQueue();
    EXPECT_THAT(mBrain->mOptimized, ElementsAre("a.gif"));
}

TEST_F(ProcessTest, TheSettingsOfAFileAreThoseOfItsBeginning) {
    WriteTestFile(Queue("a.gif", 10) + ".BAK", "older");
    Queue("b.gif", 10);
    mBrain->mNewSizes = {{"a.gif", 5}, {"b.gif", 5}};
    mBrain->mActions["a.gif"] = [this] { // the user opens the dialog while the file is worked on
        for (const char* name : {"BACKUP", "LOG"})
            mPrefs.Override(name, 0);
    };
    mPrefs.Override("OBACK", 1);
    mBrain->ProcessQueue();
    EXPECT_EQ(ReadTestFile(mFolder / "a.gif.BAK"), "xxxxxxxxxx");
    EXPECT_THAT(ReadLog(), testing::HasSubstr("a.gif"));
    EXPECT_FALSE(std::filesystem::exists(mFolder / "b.gif.BAK"));
    EXPECT_THAT(ReadLog(), testing::Not(testing::HasSubstr("b.gif")));
}

TEST_F(ProcessTest, WhatIsDeliveredIsTheFileAsItIsWhenItHasChangedMeanwhile) {
    MizerOutputFolder folder(mFolder / "out");
    MizerOptions options;
    options.mDelivery = &folder;
    MakeBrain(options);
    const std::string path = Queue("a.gif", 10);
    folder.Plan(path, "a.gif");
    mBrain->mNewSizes["COPY.GIF"] = 5;
    mBrain->mActions["COPY.GIF"] = [&] { WriteTestFile(path, "saved anew"); };
    mBrain->ProcessQueue();
    EXPECT_EQ(mShell.mResults[0].mReason, MizerReason::km_ChangedMeanwhile);
    EXPECT_EQ(ReadTestFile(mFolder / "out/a.gif"), "saved anew");
}

TEST_F(ProcessTest, WhatIsSavedAtTheLastMomentStays) {
    MizerOptions options;
    options.mLeastSaving.mBytes = 1;
    MakeBrain(options);
    const std::string path = Queue("a.gif", 10);
    mBrain->mNewSizes["COPY.GIF"] = 5;
    mShell.mOnReplace = [&] { WriteTestFile(path, "saved anew"); };
    mBrain->ProcessQueue();
    EXPECT_EQ(mShell.mResults[0].mReason, MizerReason::km_ChangedMeanwhile);
    EXPECT_EQ(ReadTestFile(path), "saved anew");
}

TEST_F(ProcessTest, ARequestToQuitTakesThePlaceOfTheBatch) {
    Queue("a.gif", 1);
    mBrain->RequestQuit();
    mBrain->ProcessQueue();
    EXPECT_THAT(mBrain->mOptimized, IsEmpty());
    EXPECT_EQ(mShell.mCommands, "q");
}

} // namespace

#pragma once

#include "tests/support/test.h"
#include "win/batch/mizerbrain.h"
#include "wnatom/wnpref.h"

/** A shell that only records. */
class RecordingShell : public MizerShell {
public:
    bool PumpEvents() override {
        if (mOnPump)
            mOnPump();
        return mCancelAtPump != 0 && --mCancelAtPump == 0;
    }
    bool ShowProgress(double /*inFraction*/) override { return mCancelInFile; }
    void SetPanelText(MizerControl inControl, const char* inText) override {
        mPanel.push_back(std::to_string(static_cast<int>(inControl)) + ": " + inText);
    }
    void EnableCommands(bool inEnable) override { mCommands += inEnable ? "+" : "-"; }
    void ShowMessage(const char* inText, const char* inCaption, Icon inIcon) override {
        mMessages.push_back(std::string(inCaption) + (inIcon == Icon::km_Stop ? "! " : ": ") + inText);
    }
    void BeforeReplace(const char* /*inPath*/) override {
        if (mOnReplace)
            mOnReplace();
    }
    void FileDone(const MizerFileResult& inResult) override { mResults.push_back(inResult); }
    void PostQuit() override { mCommands += "q"; }

    /** The panel texts since the last call. */
    std::vector<std::string> TakePanel() { return std::exchange(mPanel, {}); }

    std::function<void()> mOnPump, mOnReplace;
    int mCancelAtPump = 0; // 1: at the next one
    bool mCancelInFile = false;
    std::string mDataFolder;
    std::string mCommands;
    std::vector<std::string> mMessages;
    std::vector<MizerFileResult> mResults;

private:
    std::vector<std::string> mPanel;
};

/** A batch whose optimizer cuts each file to the size that the test wants it to have. */
class TestBrain : public MizerBrain {
public:
    using MizerBrain::MizerBrain;

    std::map<std::string, std::uint32_t> mNewSizes; // by file name; others stay as they are
    std::map<std::string, std::function<void()>> mActions;
    std::vector<std::string> mOptimized; // file names in order

protected:
    std::uint32_t OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize, MizerFileJob& ioJob,
                                  PvOutcome&) override {
        const std::string name = std::filesystem::path(inPath).filename().string();
        mOptimized.push_back(name);
        if (const auto action = mActions.find(name); action != mActions.end())
            action->second();
        const auto newSize = mNewSizes.find(name);
        if (newSize == mNewSizes.end())
            return inOriginalSize;
        ioJob.BackupFile(inPath);
        std::filesystem::resize_file(inPath, newSize->second);
        return newSize->second;
    }
};

/** A batch in an environment of its own, over the files of a fresh folder. */
class BatchTest : public testing::Test {
protected:
    BatchTest() {
        mShell.mDataFolder = mFolder.GetPath();
        MakeBrain();
    }

    void MakeBrain(MizerOptions inOptions = {}) {
        mBrain.reset();
        inOptions.mFindDataFolder = [this] { return mShell.mDataFolder; };
        mBrain = std::make_unique<TestBrain>(mPrefs, mShell, PvOptSettings{}, inOptions);
    }

    /** A file of a size in bytes, queued. */
    std::string Queue(const std::string& inName, std::size_t inSize) {
        std::string path = WriteTestFile(mFolder / inName, std::string(inSize, 'x'));
        EXPECT_TRUE(mBrain->AddFileToQueue(path.c_str()));
        return path;
    }

    std::string ReadLog() const { return ReadTestFile(mFolder / "PVGFLog.TXT"); }

    TestFolder mFolder;
    TestEnvironment mEnvironment{mFolder};
    WnPref mPrefs = MizerOpenPreferences();
    RecordingShell mShell;
    std::unique_ptr<TestBrain> mBrain;
};

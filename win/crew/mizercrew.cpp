#include "win/crew/mizercrew.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "win/texts/pvtexts.h"
#include "wnatom/wnchild.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

using Kind = CrewRecord::Kind;

constexpr std::chrono::milliseconds km_BetweenLooks(100); // at the user's commands

} // namespace

struct MizerCrew::File {
    std::string mPath;
    std::uint64_t mSize = 0; // bytes, as far as is known before the work on it
    bool mIsStarted = false;
    bool mIsStartShown = false;
    CrewProgress mProgress;
    std::optional<MizerFileResult> mResult;
};

struct MizerCrew::Worker {
    std::unique_ptr<WnChild> mChild; // null when it ended and no other could be started
    CrewInput mInput;
    File* mFile = nullptr; // in its hands
};

MizerCrew::MizerCrew(WnPref& ioPrefs, MizerShell& inShell, MizerCrewOptions inOptions, FindPlace inFindPlace)
    : mShell(inShell),
      mTotals(ioPrefs, inShell),
      mOptions(std::move(inOptions)),
      mFindPlace(std::move(inFindPlace)),
      mWorkers(mOptions.mWorkers) {
    for (Worker& worker : mWorkers)
        worker.mChild = std::make_unique<WnChild>(mOptions.mArguments);
}

MizerCrew::~MizerCrew() = default;

bool MizerCrew::ProcessWholeQueue(FileQueue& ioQueue) {
    TakeOver(ioQueue);
    mTotals.StartBatch();
    mShell.EnableCommands(true);
    while (mShown < mFiles.size()) {
        HandOut();
        if (!IsAnyoneBusy())
            break;
        Listen();
        ShowFirst();
        ShowProgress();
    }
    for (; mShown < mFiles.size(); ++mShown) // those that a cancel left behind others
        if (mFiles[mShown].mResult)
            ShowEnd(mFiles[mShown]);
    mShell.EnableCommands(false);
    mTotals.EndBatch(mIsCancelled);
    return !mIsCancelled;
}

void MizerCrew::TakeOver(FileQueue& ioQueue) {
    std::vector<std::uint64_t> sizes;
    while (!ioQueue.IsEmpty()) {
        File file;
        file.mPath = ioQueue.TakeFirst().get();
        const auto state = WnGetFileState(file.mPath.c_str());
        file.mSize = state && MizerIsNamedGIF(file.mPath.c_str()) ? state->mSize : 0;
        sizes.push_back(file.mSize);
        mFiles.push_back(std::move(file));
    }
    mOrder.emplace(std::move(sizes), mWorkers.size());
}

void MizerCrew::HandOut() {
    bool isAnyoneThere = false;
    for (Worker& worker : mWorkers) {
        if (worker.mChild && !worker.mFile && !mIsCancelled && !mOrder->IsEmpty())
            HandOut(worker, mFiles[mOrder->TakeNext()]);
        isAnyoneThere = isAnyoneThere || worker.mChild;
    }
    if (!isAnyoneThere && !mIsCancelled)
        GiveUpTheRest();
}

void MizerCrew::HandOut(Worker& ioWorker, File& ioFile) {
    ioWorker.mFile = &ioFile;
    if (!ioWorker.mChild->Send(CrewPack(Kind::km_Job, CrewJob{ioFile.mPath, mFindPlace(ioFile.mPath)})))
        Replace(ioWorker);
}

void MizerCrew::GiveUpTheRest() {
    for (File& file : mFiles) {
        if (file.mResult)
            continue;
        file.mResult.emplace().mPath = file.mPath;
        file.mResult->SetReason(MizerReason::km_WorkerEnded);
    }
    ShowFirst();
}

void MizerCrew::Listen() {
    std::vector<const WnChild*> busy;
    for (const Worker& worker : mWorkers)
        if (worker.mFile)
            busy.push_back(worker.mChild.get());
    WnChild::WaitForAny(busy, km_BetweenLooks);
    for (Worker& worker : mWorkers)
        if (worker.mFile)
            ListenTo(worker);
    if (!mIsCancelled && mShell.PumpEvents()) {
        mIsCancelled = true;
        SendAll(Kind::km_Cancel);
    }
}

void MizerCrew::ListenTo(Worker& ioWorker) {
    const auto bytes = ioWorker.mChild->Receive();
    ioWorker.mInput.Add(bytes.value_or(""));
    bool isSound = true;
    while (ioWorker.mFile && isSound) {
        const auto record = ioWorker.mInput.Take();
        if (!record)
            break;
        isSound = Hear(ioWorker, *record);
    }
    if (ioWorker.mFile && (!bytes || !isSound || ioWorker.mInput.IsBroken()))
        Replace(ioWorker);
}

/** @return false when it makes no sense */
bool MizerCrew::Hear(Worker& ioWorker, const CrewRecord& inRecord) {
    File& file = *ioWorker.mFile;
    switch (inRecord.mKind) {
    case Kind::km_Started:
        file.mIsStarted = true;
        return true;
    case Kind::km_Progress:
        return CrewUnpack(inRecord, file.mProgress);
    case Kind::km_BeforeReplace:
        mShell.BeforeReplace(file.mPath.c_str());
        return ioWorker.mChild->Send(CrewPack(Kind::km_GoOn));
    case Kind::km_ResultMade:
        return HearOfResult(ioWorker, inRecord);
    case Kind::km_Message:
        return HearMessage(inRecord);
    case Kind::km_Done:
        return HearOfEnd(ioWorker, inRecord);
    default:
        return false;
    }
}

bool MizerCrew::HearOfResult(Worker& ioWorker, const CrewRecord& inRecord) {
    CrewResultMade made;
    if (!CrewUnpack(inRecord, made))
        return false;
    mShell.ResultMade(ioWorker.mFile->mPath.c_str(), made.mResultPath.c_str());
    return ioWorker.mChild->Send(CrewPack(Kind::km_GoOn));
}

bool MizerCrew::HearMessage(const CrewRecord& inRecord) {
    CrewMessage message;
    if (!CrewUnpack(inRecord, message))
        return false;
    mShell.ShowMessage(message.mText.c_str(), message.mCaption.c_str(),
                       message.mIsStop ? MizerShell::Icon::km_Stop : MizerShell::Icon::km_None);
    return true;
}

bool MizerCrew::HearOfEnd(Worker& ioWorker, const CrewRecord& inRecord) {
    MizerFileResult result;
    if (!CrewUnpack(inRecord, result))
        return false;
    EndFile(ioWorker, result);
    return true;
}

void MizerCrew::Replace(Worker& ioWorker) {
    MizerFileResult result;
    result.mPath = ioWorker.mFile->mPath;
    result.SetReason(mIsCancelled ? MizerReason::km_Cancelled : MizerReason::km_WorkerEnded);
    EndFile(ioWorker, result);
    ioWorker.mChild.reset();
    ioWorker.mInput = {};
    try {
        if (!mIsCancelled)
            ioWorker.mChild = std::make_unique<WnChild>(mOptions.mArguments);
    } catch (const NvErrorCode&) { // the others go on
    }
}

void MizerCrew::EndFile(Worker& ioWorker, const MizerFileResult& inResult) {
    File& file = *std::exchange(ioWorker.mFile, nullptr);
    file.mResult = inResult;
    mBytesAhead += file.mSize;
}

/** The shell hears of the first file that it has not seen the end of, and of those behind it that are done
 *  already. */
void MizerCrew::ShowFirst() {
    for (; mShown < mFiles.size(); ++mShown) {
        File& file = mFiles[mShown];
        if (file.mIsStarted && !file.mIsStartShown)
            ShowStart(file);
        if (!file.mResult)
            return;
        ShowEnd(file);
    }
}

void MizerCrew::ShowStart(File& ioFile) {
    ioFile.mIsStartShown = true;
    mShell.FileStarted(ioFile.mPath.c_str());
    mTotals.StartFile(ioFile.mPath.c_str());
    mTotals.SetOriginalSize(static_cast<std::uint32_t>(ioFile.mSize));
}

void MizerCrew::ShowEnd(File& ioFile) {
    if (ioFile.mIsStarted && !ioFile.mIsStartShown)
        ShowStart(ioFile);
    mBytesAhead -= std::min(mBytesAhead, ioFile.mSize);
    if (ioFile.mResult->mStatus == MizerStatus::km_Smaller) {
        mTotals.SetOriginalSize(ioFile.mResult->mOriginalSize);
        mTotals.AddSaving(ioFile.mResult->mNewSize);
    }
    mShell.FileDone(*ioFile.mResult);
}

void MizerCrew::ShowProgress() {
    std::size_t others = 0;
    double bytes = static_cast<double>(mBytesAhead);
    for (const Worker& worker : mWorkers) {
        if (!worker.mFile || mShown == mFiles.size() || worker.mFile == &mFiles[mShown])
            continue;
        ++others;
        bytes += worker.mFile->mProgress.mFraction * static_cast<double>(worker.mFile->mSize);
    }
    mShell.ShowOthersInHand(others, static_cast<std::uint64_t>(bytes));
    if (mShown < mFiles.size() && mShell.ShowProgress(mFiles[mShown].mProgress.mFraction) && !mIsCancelled) {
        mIsCancelled = true;
        SendAll(Kind::km_Cancel);
    }
}

void MizerCrew::SendAll(CrewRecord::Kind inKind) {
    for (const Worker& worker : mWorkers)
        if (worker.mChild)
            worker.mChild->Send(CrewPack(inKind)); // that one is gone is noticed when listening to it
}

bool MizerCrew::IsAnyoneBusy() const {
    return std::any_of(mWorkers.begin(), mWorkers.end(),
                       [](const Worker& worker) { return worker.mFile != nullptr; });
}

void MizerCrew::Pause() {
    SendAll(Kind::km_Pause);
    mShell.ShowMessage(PvSay(PvText::km_ClickToContinue).c_str(), PvSay(PvText::km_Paused).c_str(),
                       MizerShell::Icon::km_None);
    SendAll(Kind::km_Resume);
}

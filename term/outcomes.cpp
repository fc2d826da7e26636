#include "term/outcomes.h"

#include <cstring>

#include "term/system/interrupt.h"
#include "term/text/numbers.h"
#include "win/batch/mizeroutcome.h"
#include "win/texts/pvtexts.h"

bool TermOutcomes::Begin(TermMessages& ioMessages) {
    if (mSettings.mReport.empty())
        return true;
    try {
        mReport =
            std::make_unique<TermReport>(mSettings.mReport, mSettings.mReportLimit, mSettings.mIsDryRun);
        return true;
    } catch (const NvErrorCode& error) {
        ioMessages.FileError(mSettings.mReport, "no report can be written there: " + MizerErrorWords(error));
        return false;
    }
}

std::string TermOutcomes::GetShownName(const std::string& inPath) const {
    const auto name = mShownNames.find(inPath);
    return name == mShownNames.end() ? inPath : name->second;
}

MizerFileResult TermOutcomes::GetShown(const MizerFileResult& inResult) const {
    MizerFileResult shown = inResult;
    shown.mPath = GetShownName(inResult.mPath);
    shown.mOutputPath = GetShownName(inResult.mOutputPath);
    return shown;
}

void TermOutcomes::BeforeReplace(const char* inPath) {
    if (mReport)
        mReport->BeforeReplace(inPath);
}

void TermOutcomes::ResultMade(const char* inPath, const char* inResultPath) {
    if (mReport)
        mReport->ResultMade(inPath, inResultPath);
}

void TermOutcomes::FileDone(const MizerFileResult& inResult) {
    const MizerFileResult shown = GetShown(inResult);
    mResults.FileDone(shown);
    if (mReport)
        mReport->FileDone(inResult.mPath, shown);
}

void TermOutcomes::FinishReport(bool inIsCancelled, TermMessages& ioMessages) {
    try {
        if (mReport)
            mReport->Finish(inIsCancelled);
    } catch (const NvErrorCode& error) {
        ioMessages.FileError(mSettings.mReport, "the report was not written: " + MizerErrorWords(error));
    }
}

void TermOutcomes::Finish(bool inIsCancelled, TermMessages& ioMessages) {
    FinishReport(inIsCancelled, ioMessages);
    mResults.PrintTotal(inIsCancelled);
    if (const std::uint64_t count = mResults.CountDoneBefore(); count != 0)
        ioMessages.Note(TermGrouped(count) + (count == 1 ? " file is" : " files are") +
                        (count == 1 ? " as an earlier run left it" : " as an earlier run left them") +
                        "; --again tries once more");
    if (mResults.IsPipeClosed())
        TermEndOfClosedPipe();
    if (mResults.GetWriteError() != 0)
        ioMessages.Error(std::string("standard output: ") + std::strerror(mResults.GetWriteError()));
    if (inIsCancelled)
        ioMessages.Error(PvSay(PvText::km_CodeCancelled), TermExit::km_Cancelled);
    else if (mResults.IsNothingDone() && ioMessages.GetExit() == TermExit::km_Success)
        ioMessages.Error("nothing was done", TermExit::km_NothingDone);
}

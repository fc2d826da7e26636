#include "term/outcomes.h"

#include <cstring>

#include "term/system/interrupt.h"
#include "win/batch/mizeroutcome.h"

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

void TermOutcomes::BeforeReplace(const char* inPath) {
    if (mReport)
        mReport->BeforeReplace(inPath);
}

void TermOutcomes::ResultMade(const char* inResultPath) {
    if (mReport)
        mReport->ResultMade(inResultPath);
}

void TermOutcomes::FileDone(const MizerFileResult& inResult) {
    mResults.FileDone(inResult);
    if (mReport)
        mReport->FileDone(inResult);
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
    if (mResults.IsPipeClosed())
        TermEndOfClosedPipe();
    if (mResults.GetWriteError() != 0)
        ioMessages.Error(std::string("standard output: ") + std::strerror(mResults.GetWriteError()));
    if (inIsCancelled)
        ioMessages.Error("cancelled", TermExit::km_Cancelled);
    else if (mResults.IsNothingDone() && ioMessages.GetExit() == TermExit::km_Success)
        ioMessages.Error("nothing was done", TermExit::km_NothingDone);
}

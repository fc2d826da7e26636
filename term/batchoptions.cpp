#include "term/batchoptions.h"

#include "wnatom/wnpref.h"

MizerOptions TermMakeBatchOptions(const TermSettings& inSettings) {
    return {
        .mLeastSaving = inSettings.mLeastSaving,
        .mKeepsTimes = inSettings.mKeepsTimes,
        .mSkipsDone = inSettings.mSkipsDone,
        .mLeavesDone = !inSettings.mTriesAgain && !inSettings.IsFilter(),
        .mNotesDone = !inSettings.mIsDryRun && !inSettings.IsFilter(),
        .mSharesFiles = !inSettings.IsFilter(),
    };
}

MizerOutputFolder TermMakeOutputFolder(const TermSettings& inSettings) {
    using Present = MizerOutputFolder::Present;
    const Present present = inSettings.mReplacesOutput  ? Present::km_Replaced
                            : inSettings.mUpdatesOutput ? Present::km_Updated
                                                        : Present::km_Stays;
    return MizerOutputFolder(inSettings.mOutputFolder, present, inSettings.mKeepsTimes);
}

void TermLeaveNoTrace(WnPref& ioPrefs) {
    ioPrefs.KeepStoreAsItIs();
    ioPrefs.Override("LOG", 0);
    ioPrefs.Override("BACKUP", 0);
}

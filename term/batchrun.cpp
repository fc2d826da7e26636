#include "term/batchrun.h"

#include <memory>
#include <optional>
#include <utility>

#include "term/commands.h"
#include "term/inputs/outputplan.h"
#include "term/panel/panel.h"
#include "term/preferences.h"
#include "term/system/interrupt.h"
#include "term/system/terminal.h"
#include "term/termshell.h"
#include "win/batch/mizerbrain.h"
#include "win/batch/mizerdelivery.h"
#include "win/batch/mizeroutcome.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnscratch.h"

namespace {

/** A trial and a filter leave no trace of their own. */
void LeaveNoTrace(WnPref& ioPrefs) {
    ioPrefs.KeepStoreAsItIs();
    ioPrefs.Override("LOG", 0);
    ioPrefs.Override("BACKUP", 0);
}

/** Where results go if not over their originals: null.
 *  @return false, with the error reported, if they cannot go there */
bool MakeDelivery(const TermInputs& inInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                  std::unique_ptr<MizerDelivery>& outDelivery) {
    using Present = MizerOutputFolder::Present;
    if (inSettings.mIsDryRun)
        outDelivery = std::make_unique<MizerDryRun>();
    if (inSettings.mIsDryRun || inSettings.mOutputFolder.empty())
        return true;
    auto output = std::make_unique<MizerOutputFolder>(inSettings.mOutputFolder,
                                                      inSettings.mReplacesOutput  ? Present::km_Replaced
                                                      : inSettings.mUpdatesOutput ? Present::km_Updated
                                                                                  : Present::km_Stays);
    try {
        const std::string objection =
            TermPlanOutput(inSettings.mOutputFolder, inInputs, inSettings.mIsRecursive, *output);
        if (!objection.empty())
            ioMessages.Error(TermPrintable(objection), TermExit::km_Usage);
        outDelivery = std::move(output);
        return objection.empty();
    } catch (const NvErrorCode& error) {
        ioMessages.Error("nothing can be written to '" + TermPrintable(inSettings.mOutputFolder) +
                         "': " + MizerErrorWords(error));
        return false;
    }
}

/** Every candidate is written to the temporary folder first: without one no file can be worked on, and an
 *  error about a file would name the wrong place. */
bool HasTemporaryFolder(TermMessages& ioMessages) {
    try {
        const WnScratchFile trial;
        return true;
    } catch (const NvErrorCode& error) {
        ioMessages.Error("nothing can be written to the temporary folder: " + MizerErrorWords(error));
        return false;
    }
}

bool WantsPanel(const TermSettings& inSettings) {
    const bool readsInput = inSettings.IsFilter() || inSettings.mNamesFile == "-";
    return inSettings.GetDetail() != TermDetail::km_Quiet && inSettings.mFormat == TermFormat::km_Table &&
           TermCanDraw(readsInput);
}

/** @return whether it was cancelled */
bool RunBrain(TermInputs& ioInputs, const TermSettings& inSettings, const MizerOptions& inOptions,
              TermShell& ioShell, TermMessages& ioMessages) {
    WnPref prefs = TermOpenPreferences(inSettings, ioMessages);
    if (inSettings.mIsDryRun || inSettings.IsFilter())
        LeaveNoTrace(prefs);
    std::optional<TermPanel> panel;
    if (WantsPanel(inSettings))
        ioShell.SetPanel(&panel.emplace(ioInputs));
    MizerBrain brain(prefs, ioShell, inSettings.mOptimizer, inOptions); // stores the totals when it goes
    if (panel)
        ioShell.SetPanel(&*panel, [&] { brain.Pause(); });
    brain.AddQueue(*ioInputs.mQueue);
    const bool isCancelled = !brain.ProcessWholeQueue();
    ioShell.SetPanel(nullptr);
    return isCancelled;
}

} // namespace

void TermProcessInputs(TermInputs& ioInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                       TermOutcomes& ioOutcomes) {
    std::unique_ptr<MizerDelivery> delivery;
    if (ioMessages.GetExit() == TermExit::km_Usage ||
        !MakeDelivery(ioInputs, inSettings, ioMessages, delivery) || !HasTemporaryFolder(ioMessages))
        return;
    const MizerOptions options = {
        .mDelivery = delivery.get(),
        .mLeastSaving = inSettings.mLeastSaving,
        .mKeepsTimes = inSettings.mKeepsTimes,
        .mSkipsDone = inSettings.mSkipsDone,
        .mSharesFiles = !inSettings.IsFilter(),
    };
    TermShell shell(inSettings, ioMessages, ioOutcomes);
    if (inSettings.IsFilter())
        shell.SetShownName(ioInputs.mFiles.front().mPath, ioInputs.mFiles.front().mPlace);
    ioOutcomes.Finish(RunBrain(ioInputs, inSettings, options, shell, ioMessages), ioMessages);
}

void TermRunBatch(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.GetDetail() == TermDetail::km_Quiet);
    if (const std::string objection = TermCheckNames(inSettings); !objection.empty())
        return ioMessages.Error(TermPrintable(objection), TermExit::km_Usage);
    TermCatchInterrupts();
    TermOutcomes outcomes(inSettings);
    if (!outcomes.Begin(ioMessages))
        return;
    TermInputs inputs = TermListInputs(inSettings, ioMessages, &outcomes);
    if (TermIsInterrupted())
        return outcomes.Finish(true, ioMessages);
    TermProcessInputs(inputs, inSettings, ioMessages, outcomes);
}

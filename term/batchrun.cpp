#include "term/batchrun.h"

#include <memory>
#include <optional>

#include "term/filter.h"
#include "term/inputs/outputplan.h"
#include "term/panel/panel.h"
#include "term/system/interrupt.h"
#include "term/system/terminal.h"
#include "term/termshell.h"
#include "win/batch/errorwords.h"
#include "win/batch/mizerbrain.h"
#include "win/batch/mizerdelivery.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnscratch.h"

namespace {

/** The shell told of each file that failed; the rest of the batch goes on. @return whether it was cancelled.
 */
bool ProcessAll(MizerBrain& ioBrain) {
    for (;;) {
        try {
            ioBrain.ProcessQueue();
            return false;
        } catch (const NvErrorCode& error) {
            if (error.GetCode() == NvErrorCode::km_Cancelled)
                return true;
        }
    }
}

/** A trial and a filter leave no trace of their own. */
void SetPreferences(const TermSettings& inSettings, WnPref& ioPrefs) {
    for (const auto& [name, value] : inSettings.mPreferences)
        ioPrefs.Override(name.c_str(), value);
    if (!inSettings.mIsDryRun && !inSettings.IsFilter())
        return;
    ioPrefs.KeepStoreAsItIs();
    ioPrefs.Override("LOG", 0);
    ioPrefs.Override("BACKUP", 0);
}

/** Where results go when not over their originals; null and a told error when they cannot go there. */
std::unique_ptr<MizerDelivery> MakeDelivery(const TermInputs& inInputs, const TermSettings& inSettings,
                                            TermMessages& ioMessages) {
    if (inSettings.mIsDryRun)
        return std::make_unique<MizerDryRun>();
    if (inSettings.mOutputFolder.empty())
        return nullptr;
    auto output = std::make_unique<MizerOutputFolder>(inSettings.mOutputFolder);
    const std::string objection =
        TermPlanOutput(inSettings.mOutputFolder, inInputs, inSettings.mIsRecursive, *output);
    if (objection.empty())
        return output;
    ioMessages.Error(TermPrintable(objection), TermExit::km_Usage);
    return nullptr;
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
    return inSettings.mDetail != TermDetail::km_Quiet && !inSettings.mIsJson && TermCanDraw(readsInput);
}

/** @return whether it was cancelled */
bool RunBrain(const TermInputs& inInputs, const TermSettings& inSettings, const MizerOptions& inOptions,
              TermShell& ioShell) {
    WnPref prefs("Parvigif", "1.x");
    SetPreferences(inSettings, prefs);
    std::optional<TermPanel> panel;
    if (WantsPanel(inSettings))
        ioShell.SetPanel(&panel.emplace(inInputs));
    MizerBrain brain(prefs, ioShell, inSettings.mOptimizer, inOptions); // stores the totals when it goes
    if (panel)
        ioShell.SetPanel(&*panel, [&] { brain.Pause(); });
    for (const TermInput& input : inInputs.mFiles)
        brain.AddFileToQueue(input.mPath.c_str());
    const bool cancelled = ProcessAll(brain);
    ioShell.SetPanel(nullptr);
    return cancelled;
}

} // namespace

void TermProcessInputs(const TermInputs& inInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                       TermOutcomes& ioOutcomes) {
    const auto delivery = MakeDelivery(inInputs, inSettings, ioMessages);
    if (ioMessages.GetExit() == TermExit::km_Usage || !HasTemporaryFolder(ioMessages))
        return;
    const MizerOptions options = {delivery.get(), inSettings.mLeastSaving, inSettings.mKeepsTimes,
                                  inSettings.mSkipsDone, !inSettings.IsFilter()};
    TermShell shell(inSettings, ioMessages, ioOutcomes.GetResults(), &ioOutcomes);
    if (inSettings.IsFilter())
        shell.SetShownName(inInputs.mFiles.front().mPath, inInputs.mFiles.front().mPlace);
    ioOutcomes.Finish(RunBrain(inInputs, inSettings, options, shell), ioMessages);
}

void TermRunBatch(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.mDetail == TermDetail::km_Quiet);
    if (inSettings.IsFilter())
        return TermRunFilter(inSettings, ioMessages);
    TermCatchInterrupts();
    TermOutcomes outcomes(inSettings);
    if (outcomes.Begin(ioMessages))
        TermProcessInputs(TermListInputs(inSettings, ioMessages, &outcomes), inSettings, ioMessages,
                          outcomes);
}

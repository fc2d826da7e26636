#include "term/batchrun.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "term/batchoptions.h"
#include "term/commands.h"
#include "term/inputs/outputplan.h"
#include "term/panel/panel.h"
#include "term/preferences.h"
#include "term/system/interrupt.h"
#include "term/system/terminal.h"
#include "term/termshell.h"
#include "term/workers.h"
#include "win/batch/mizerbrain.h"
#include "win/batch/mizerdelivery.h"
#include "win/batch/mizeroutcome.h"
#include "win/crew/mizercrew.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnscratch.h"

namespace {

/** Where results go if not over their originals: null.
 *  @return false, with the error reported, if they cannot go there */
bool MakeDelivery(const TermInputs& inInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                  std::unique_ptr<MizerDelivery>& outDelivery) {
    if (inSettings.mIsDryRun)
        outDelivery = std::make_unique<MizerDryRun>();
    if (inSettings.mIsDryRun || inSettings.mOutputFolder.empty())
        return true;
    auto output = std::make_unique<MizerOutputFolder>(TermMakeOutputFolder(inSettings));
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

/** Sets what the key for a pause does. */
using SetPause = std::function<void(std::function<void()>)>;

/** @return false when it was cancelled */
bool RunBrain(TermInputs& ioInputs, const PvOptSettings& inSettings, const MizerOptions& inOptions,
              WnPref& ioPrefs, TermShell& ioShell, const SetPause& inSetPause) {
    MizerBrain brain(ioPrefs, ioShell, inSettings, inOptions); // stores the totals when it goes
    inSetPause([&] { brain.Pause(); });
    brain.AddQueue(*ioInputs.mQueue);
    return brain.ProcessWholeQueue();
}

/** Several files at once. @return as RunBrain */
bool RunCrew(TermInputs& ioInputs, const MizerCrewOptions& inOptions, WnPref& ioPrefs, TermShell& ioShell,
             const SetPause& inSetPause) {
    std::map<std::string, std::string> places;
    for (const TermInput& input : ioInputs.mFiles)
        places[input.mPath] = input.mPlace;
    MizerCrew crew(ioPrefs, ioShell, inOptions, [&](const std::string& path) { return places[path]; });
    inSetPause([&] { crew.Pause(); });
    return crew.ProcessWholeQueue(*ioInputs.mQueue);
}

/** @return false when it was cancelled */
bool RunQueue(TermInputs& ioInputs, const TermSettings& inSettings, const MizerOptions& inOptions,
              TermShell& ioShell, TermMessages& ioMessages) {
    WnPref prefs = TermOpenPreferences(inSettings, ioMessages);
    if (inSettings.mIsDryRun || inSettings.IsFilter())
        TermLeaveNoTrace(prefs);
    std::optional<TermPanel> panel;
    if (WantsPanel(inSettings))
        ioShell.SetPanel(&panel.emplace(ioInputs));
    const SetPause setPause = [&](std::function<void()> pause) {
        if (panel)
            ioShell.SetPanel(&*panel, std::move(pause));
    };
    const std::size_t workers = TermCountWorkers(inSettings, ioInputs.mFiles.size());
    try {
        if (workers > 1)
            return RunCrew(ioInputs, {workers, TermMakeWorkerArguments(inSettings, workers)}, prefs, ioShell,
                           setPause);
    } catch (const NvErrorCode& error) {
        ioMessages.Warning("one file at a time, since no worker can be started: " + MizerErrorWords(error));
    }
    return RunBrain(ioInputs, inSettings.mOptimizer, inOptions, prefs, ioShell, setPause);
}

} // namespace

void TermProcessInputs(TermInputs& ioInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                       TermOutcomes& ioOutcomes) {
    std::unique_ptr<MizerDelivery> delivery;
    if (ioMessages.GetExit() == TermExit::km_Usage ||
        !MakeDelivery(ioInputs, inSettings, ioMessages, delivery) || !HasTemporaryFolder(ioMessages))
        return;
    MizerOptions options = TermMakeBatchOptions(inSettings);
    options.mDelivery = delivery.get();
    TermShell shell(inSettings, ioMessages, ioOutcomes);
    if (inSettings.IsFilter())
        ioOutcomes.SetShownName(ioInputs.mFiles.front().mPath, ioInputs.mFiles.front().mPlace);
    const bool isWhole = RunQueue(ioInputs, inSettings, options, shell, ioMessages);
    shell.SetPanel(nullptr);
    ioOutcomes.Finish(!isWhole, ioMessages);
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

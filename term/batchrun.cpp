#include "term/batchrun.h"

#include <cstring>

#include "term/interrupt.h"
#include "term/names.h"
#include "term/results.h"
#include "term/termshell.h"
#include "win/mizerbrain.h"
#include "wnatom/wnpref.h"

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

} // namespace

void TermRunBatch(const TermSettings& inSettings, TermMessages& ioMessages) {
    ioMessages.SetQuiet(inSettings.mDetail == TermDetail::km_Quiet);
    TermCatchInterrupts();
    WnPref prefs("Parvigif", "1.x");
    for (const auto& [name, value] : inSettings.mPreferences)
        prefs.Override(name.c_str(), value);

    TermResults results(inSettings);
    TermShell shell(inSettings, ioMessages, results);
    bool cancelled = false;
    {
        MizerBrain brain(prefs, shell, inSettings.mOptimizer); // stores the totals when it goes
        TermQueueNames(
            inSettings.mNames, ioMessages, [&](const char* inName) { return brain.AddNameToQueue(inName); },
            &results);
        cancelled = ProcessAll(brain);
    }
    results.PrintTotal(cancelled);
    if (results.IsPipeClosed())
        TermEndOfClosedPipe();
    if (results.GetWriteError() != 0)
        ioMessages.Error(std::string("standard output: ") + std::strerror(results.GetWriteError()));
    if (cancelled)
        ioMessages.Error("cancelled", TermExit::km_Cancelled);
}

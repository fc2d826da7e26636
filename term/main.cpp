// parvigif: makes GIF files smaller in place, from the command line.

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "term/commands.h"
#include "term/options/arguments.h"
#include "term/options/help.h"
#include "term/system/print.h"
#include "term/system/standardstreams.h"
#include "term/text/messages.h"
#include "term/workers.h"
#include "win/batch/mizeroutcome.h"
#include "win/texts/pvtexts.h"

namespace {

void WorkOnNames(const TermSettings& inSettings, TermMessages& ioMessages) {
    if (!inSettings.mContactSheet.empty())
        return TermDrawContactSheet(inSettings, ioMessages);
    if (inSettings.IsFilter())
        return TermRunFilter(inSettings, ioMessages);
    TermRunBatch(inSettings, ioMessages);
}

void Run(const TermSettings& inSettings, TermMessages& ioMessages) {
    TermStorePreferences(inSettings, ioMessages);
    switch (inSettings.mTask) {
    case TermTask::km_Process:
        return WorkOnNames(inSettings, ioMessages);
    case TermTask::km_Restore:
        return TermRestore(inSettings, ioMessages);
    case TermTask::km_Store:
        return;
    case TermTask::km_ListPreferences:
        return TermListPreferences(inSettings, ioMessages);
    case TermTask::km_Totals:
        return TermPrintTotals(ioMessages);
    case TermTask::km_ResetTotals:
        return TermResetTotals(ioMessages);
    case TermTask::km_ShowLog:
        return TermShowLog(ioMessages);
    case TermTask::km_ClearLog:
        return TermClearLog(ioMessages);
    case TermTask::km_BriefHelp:
        return TermPrint(TermBriefHelp(), ioMessages);
    case TermTask::km_FullHelp:
        return TermPrint(TermFullHelp(), ioMessages);
    case TermTask::km_Version:
        return TermPrint(TermVersion(), ioMessages);
    }
}

} // namespace

int main(int inCount, char** inArguments) {
    TermPrepareStreams();
    TermMessages messages;
    try {
        const std::vector<std::string> arguments(inArguments + 1, inArguments + inCount);
        TermSettings settings;
        std::string error;
        if (TermRunWorker(arguments))
            return 0;
        if (TermParseArguments(arguments, settings, error))
            Run(settings, messages);
        else
            messages.Error(TermPrintable(error) + " (see 'parvigif --help')", TermExit::km_Usage);
    } catch (const NvErrorCode& failure) {
        messages.Error(MizerErrorWords(failure));
    } catch (const std::bad_alloc&) {
        messages.Error(PvSay(PvText::km_OutOfMemory));
    } catch (const std::exception& exception) {
        messages.Error(TermPrintable(MizerErrorWords(exception)));
    }
    return static_cast<int>(messages.GetExit());
}

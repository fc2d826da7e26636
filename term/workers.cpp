#include "term/workers.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "term/batchoptions.h"
#include "term/options/arguments.h"
#include "term/preferences.h"
#include "term/system/interrupt.h"
#include "term/system/standardstreams.h"
#include "win/batch/mizerdelivery.h"
#include "win/crew/crewworker.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr const char* km_WorkerArgument = "--worker"; // nothing that people type: not in the table of options

} // namespace

std::size_t TermCountWorkers(const TermSettings& inSettings, std::size_t inFiles) {
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t wanted = inSettings.mJobs != 0 ? inSettings.mJobs : inFiles > cores ? cores : 1;
    return std::clamp<std::size_t>(wanted, 1, std::max<std::size_t>(inFiles, 1));
}

std::vector<std::string> TermMakeWorkerArguments(const TermSettings& inSettings, std::size_t inWorkers) {
    std::vector<std::string> arguments = {km_WorkerArgument, std::to_string(inWorkers)};
    arguments.insert(arguments.end(), inSettings.mArguments.begin(), inSettings.mArguments.end());
    return arguments;
}

bool TermRunWorker(const std::vector<std::string>& inArguments) {
    TermSettings settings;
    std::string error;
    if (inArguments.size() < 2 || inArguments[0] != km_WorkerArgument ||
        !TermParseArguments({inArguments.begin() + 2, inArguments.end()}, settings, error))
        return false;
    TermIgnoreInterrupts();
    TermCarryBytes();
    WnPref prefs = TermOpenPreferences(settings);
    if (settings.mIsDryRun)
        TermLeaveNoTrace(prefs);
    PvOptSettings optimizer = settings.mOptimizer;
    if (optimizer.mMemoryLimit == 0)
        optimizer.mMemoryLimit = WnGetUsualMemoryLimit();
    optimizer.mMemoryLimit /= std::max(1UL, std::strtoul(inArguments[1].c_str(), nullptr, 10));
    MizerDryRun nowhere;
    MizerOutputFolder folder = TermMakeOutputFolder(settings);
    MizerOptions options = TermMakeBatchOptions(settings);
    if (settings.mIsDryRun)
        options.mDelivery = &nowhere;
    else if (!settings.mOutputFolder.empty())
        options.mDelivery = &folder;
    CrewWork(prefs, optimizer, options,
             [&](const std::string& path, const std::string& place) { folder.Plan(path, place); });
    return true;
}

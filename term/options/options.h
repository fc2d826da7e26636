#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "win/batch/mizeroptions.h"
#include "win/optimizer/base/pvoptsettings.h"

enum class TermTask {
    km_Process,
    km_Restore,
    km_Store, ///< only what --set asks for, which every task but help does first
    km_ListPreferences,
    km_Totals,
    km_ResetTotals,
    km_ShowLog,
    km_ClearLog,
    km_BriefHelp,
    km_FullHelp,
    km_Version
};

/** Help and version, which win over every other task. */
inline bool TermIsHelp(TermTask inTask) {
    return inTask == TermTask::km_BriefHelp || inTask == TermTask::km_FullHelp ||
           inTask == TermTask::km_Version;
}

/** How much the program reports: errors only, a line per file, or skipped files too. */
enum class TermDetail { km_Quiet, km_Normal, km_Verbose };

/** How results are printed: for people, or for programs. */
enum class TermFormat { km_Table, km_Json, km_Csv };

/** What the command line asks for. */
struct TermSettings {
    TermTask mTask = TermTask::km_Process;
    std::string mTaskName; ///< the option that asks for it, as typed; empty for km_Process
    bool mIsQuiet = false; ///< see GetDetail
    bool mIsVerbose = false;
    std::map<std::string, std::uint32_t> mPreferences; ///< preferences that hold for this run only
    std::map<std::string, std::uint32_t> mStored;      ///< preferences to store
    std::string mContactSheet;                         ///< the file to draw one on; empty: process the names
    PvOptSettings mOptimizer;
    std::vector<std::string> mArguments;   ///< all that the program was started with
    std::uint32_t mJobs = 0;               ///< files to work on at once; 0: as many as suit the machine
    std::string mReport;                   ///< the page to write about the run; empty: none
    std::uint64_t mReportLimit = 32 << 20; ///< bytes of pictures that the page may hold
    TermFormat mFormat = TermFormat::km_Table;
    std::vector<std::string> mNames; ///< as typed, in order
    std::string mNamesFile;          ///< holds more names, one per line; "-": standard input; empty: none
    bool mNamesEndInNul = false;     ///< in that file
    bool mIsRecursive = false;
    bool mEntersHidden = false;         ///< also folders whose names begin with a dot
    std::vector<std::string> mExcluded; ///< patterns of files and folders to leave out
    bool mIsDryRun = false;
    bool mKeepsTimes = false;
    bool mSkipsDone = false;
    bool mTriesAgain = false;     ///< also files that an earlier run has finished with
    std::string mOutputFolder;    ///< where results go; empty: over their originals
    bool mUpdatesOutput = false;  ///< results there may be replaced when they are older than their originals
    bool mReplacesOutput = false; ///< whatever is there may be replaced
    MizerLeastSaving mLeastSaving;

    TermDetail GetDetail() const {
        return mIsQuiet ? TermDetail::km_Quiet : mIsVerbose ? TermDetail::km_Verbose : TermDetail::km_Normal;
    }

    /** Whether one picture comes in on standard input and goes out on standard output. */
    bool IsFilter() const { return mNames.size() == 1 && mNames[0] == "-"; }
};

/** One option. The parser and the help text both come from the table of these. */
struct TermOption {
    const char* mName; ///< after "--"
    char mShort;       ///< after "-", or 0
    /** What it takes, or null. Shells complete a FILE, OUT or DIR, or one of several words: "auto|never". */
    const char* mArgument;
    const char* mGroup; ///< heading in the help
    const char* mBrief; ///< one line
    const char* mMore;  ///< the rest of the full help, or null
    /** @return false when the argument is invalid */
    bool (*mApply)(TermSettings& ioSettings, const std::string& inArgument);
    bool mIsRare = false;         ///< left out of the short help, which has to fit a screen
    const char* mNeeds = nullptr; ///< which arguments are valid, in words; null: any name
};

/** Grouped, in the order of the help. */
std::span<const TermOption> TermGetOptions();

#include "term/options/options.h"

#include <algorithm>
#include <array>

#include "term/options/values.h"
#include "term/text/fillin.h"
#include "win/batch/mizerpreferences.h"
#include "wnatom/wnsystem.h"

namespace {

using Settings = TermSettings;
using Argument = const std::string&;

constexpr std::uint64_t km_Mebibyte = 1 << 20;

bool SetPreference(Settings& ioSettings, const char* inName, std::uint32_t inValue) {
    ioSettings.mPreferences[inName] = inValue;
    return true;
}

bool SetTask(Settings& ioSettings, TermTask inTask) {
    if (TermIsHelp(inTask) || !TermIsHelp(ioSettings.mTask))
        ioSettings.mTask = inTask;
    return true;
}

bool SetFormat(Settings& ioSettings, TermFormat inFormat) {
    ioSettings.mFormat = inFormat;
    return true;
}

/** A size, or with a percent sign a part of the machine's memory. */
bool SetMemoryLimit(Settings& ioSettings, Argument inText) {
    double percentage = 0;
    std::uint64_t& limit = ioSettings.mOptimizer.mMemoryLimit;
    if (TermReadPercentage(inText, percentage))
        limit = static_cast<std::uint64_t>(percentage / 100 * static_cast<double>(WnGetPhysicalMemory()));
    else if (!TermReadSize(inText, km_Mebibyte, limit))
        return false;
    return limit != 0;
}

bool SetMaxTime(Settings& ioSettings, Argument inSeconds) {
    return TermReadNumber(inSeconds, 0, UINT32_MAX, ioSettings.mOptimizer.mSecondsOfWork);
}

bool SetTolerance(Settings& ioSettings, Argument inLevels) {
    return TermReadNumber(inLevels, 0, km_DifferenceTolerance, ioSettings.mOptimizer.mTolerance);
}

/** NAME=VALUE */
bool StorePreference(Settings& ioSettings, Argument inText) {
    const std::size_t equals = std::min(inText.find('='), inText.size());
    const MizerPreference* preference = MizerFindPreference(inText.substr(0, equals));
    std::uint32_t value = 0;
    if (!preference || equals == inText.size() ||
        !TermReadNumber(inText.substr(equals + 1), 0, preference->mLargest, value))
        return false;
    ioSettings.mStored[preference->mName] = value;
    return true;
}

/** "2000", bytes, "2k" or "1.5%". */
bool SetLeastSaving(Settings& ioSettings, Argument inText) {
    std::uint64_t bytes = 0;
    if (TermReadPercentage(inText, ioSettings.mLeastSaving.mPercentage))
        return true;
    if (!TermReadSize(inText, 1, bytes) || bytes > UINT32_MAX)
        return false;
    ioSettings.mLeastSaving.mBytes = static_cast<std::uint32_t>(bytes);
    return true;
}

bool SetReportLimit(Settings& ioSettings, Argument inText) {
    return TermReadSize(inText, km_Mebibyte, ioSettings.mReportLimit) &&
           ioSettings.mReportLimit <= 1024 * km_Mebibyte;
}

bool SetText(std::string& outText, Argument inText) {
    outText = inText;
    return !inText.empty();
}

constexpr std::uint32_t km_MostJobs = 1024; // beyond any machine's use

constexpr auto km_LosslessText = TermFillIn<km_MostColours>(
    "Saves less: only unused colours, pixels that the screen shows already, and better packing. Without "
    "this, a file made smaller has at most # colours.");
constexpr auto km_ToleranceBrief =
    TermFillIn<km_DifferenceTolerance>("largest colour difference ignored, 0 to #");
constexpr auto km_ToleranceNeeds = TermFillIn<km_DifferenceTolerance>("0 to #");
constexpr auto km_ToleranceText = TermFillIn<km_DifferenceTolerance>(
    "Between frames of an animation: a pixel is not drawn again while the screen shows a colour within N "
    "of 255 in red, green and blue. The default, #, is lowered for a file in which it would show.");

constexpr auto km_Options = std::to_array<TermOption>({
    {"dry-run", 'n', nullptr, "Most used", "only report what would be saved",
     "All the work is done on private copies: no file is changed, backed up, logged or counted.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsDryRun = true; }},
    {"recursive", 'r', nullptr, "Most used", "search subfolders too",
     "Links to folders are not followed; hidden folders are not entered.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsRecursive = true; }},
    {"output", 'o', "DIR", "Most used", "write results to DIR or FILE.gif, keep the originals",
     "DIR is created if missing. A folder's files go there under their own names, with -r into the same "
     "subfolders. Files that do not get smaller are copied as they are, so that DIR holds them all. Nothing "
     "already there is replaced without --update or --force. Of a single file, the result may be given a "
     "name "
     "that ends in .gif instead.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mOutputFolder, inPath); }},
    {"lossless", 0, nullptr, "Most used", "change no displayed colour", km_LosslessText.data(),
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 1); }},
    {"restore", 0, nullptr, "Most used", "restore NAMEs from their backups",
     "Each backup is read as a GIF to its end before it replaces the picture, in one step, and is kept. "
     "With a folder or a pattern: every picture that has one. A picture that may have been edited since it "
     "was made smaller is kept as a further backup. --dry-run shows what would happen.",
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Restore); }},
    {"exclude", 0, "PATTERN", "Files", "leave out files and folders named so: 'thumb*'",
     "May be repeated. The pattern, with * and ?, stands for a whole name, of a file or of a folder on the "
     "way to "
     "it below the one that is named.",
     [](Settings& ioSettings, Argument inPattern) {
         ioSettings.mExcluded.push_back(inPattern);
         return !inPattern.empty();
     },
     true, "a pattern"},
    {"hidden", 0, nullptr, "Files", "with -r: enter hidden folders, too",
     "Those whose names begin with a dot, as .git.",
     [](Settings& ioSettings, Argument) { return ioSettings.mEntersHidden = true; }, true},
    {"files-from", 0, "FILE", "Files", "read more names from FILE, one per line",
     "- is standard input: find pics -name '*.gif' | parvigif --files-from -",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mNamesFile, inPath); }},
    {"null", '0', nullptr, "Files", "names in FILE end with a NUL, as from find -print0", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mNamesEndInNul = true; }, true},
    {"min-saving", 0, "SIZE", "Files", "leave files that would shrink by less: 500, 2k, 2%",
     "In bytes, also with k or M behind the number, or in percent of the file. Such a file stays byte for "
     "byte "
     "as it is.",
     SetLeastSaving, false, "a number of bytes, as 500 or 2k, or a percentage, as 2%"},
    {"again", 0, nullptr, "Files", "try files again that an earlier run has finished with",
     "Files are known by their contents. Without this, one that is as an earlier run with the same options "
     "left "
     "it counts as unchanged at once, so that no picture loses a little more each time.",
     [](Settings& ioSettings, Argument) { return ioSettings.mTriesAgain = true; }, true},
    {"skip-done", 0, nullptr, "Files", "skip files an earlier run has finished with",
     "Such a file gets no line in the table and the log, and does not count.",
     [](Settings& ioSettings, Argument) { return ioSettings.mSkipsDone = true; }},
    {"jobs", 'j', "N", "Files", "work on N files at once",
     "Each in a process of its own; the memory limit is shared. The default is one for each processor core "
     "when there are more files than cores, else 1. Results come in the order of the names all the same.",
     [](Settings& ioSettings, Argument inCount) {
         return TermReadNumber(inCount, 1, km_MostJobs, ioSettings.mJobs);
     }},
    {"update", 'u', nullptr, "Results", "with -o: only what is missing there or older",
     "A file is passed over when its result is at least as new. So a mirror can be brought up to date.",
     [](Settings& ioSettings, Argument) { return ioSettings.mUpdatesOutput = true; }, true},
    {"force", 'f', nullptr, "Results", "with -o: replace what is there", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mReplacesOutput = true; }, true},
    {"keep-times", 0, nullptr, "Results", "keep modification times", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mKeepsTimes = true; }, true},
    {"no-backup", 0, nullptr, "Backups", "do not keep the original as NAME.BAK",
     "Without this, the original of each file made smaller is kept beside it, with .BAK added to its name.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "BACKUP", 0); }},
    {"backup", 0, nullptr, "Backups", "keep the original, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "BACKUP", 1); }, true},
    {"overwrite-backups", 0, nullptr, "Backups", "replace existing backups",
     "Without this, the first backup stays, and so the oldest original.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "OBACK", 1); }, true},
    {"keep-backups", 0, nullptr, "Backups", "keep older backups, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "OBACK", 0); }, true},
    {"allow-crop", 0, nullptr, "Picture", "trim transparent borders of still images",
     "The rest keeps its place on the screen, whose size stays the same. Frames of animations are always "
     "trimmed.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 1); }, true},
    {"no-allow-crop", 0, nullptr, "Picture", "keep borders, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 0); }, true},
    {"no-lossless", 0, nullptr, "Picture", "let colours change, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 0); }, true},
    {"tolerance", 0, "N", "Picture", km_ToleranceBrief.data(), km_ToleranceText.data(), SetTolerance, false,
     km_ToleranceNeeds.data()},
    {"max-memory", 0, "SIZE", "Picture", "leave files that need more memory: 512M, 2G, 25%",
     "Per file; a number alone is in MiB. The default is half of the machine's memory, but at least 1 GiB.",
     SetMemoryLimit, true, "a size above 0, as 512M or 2G, or a part of the memory, as 25%"},
    {"max-time", 0, "SECONDS", "Picture", "leave files that need more work",
     "Per file; 0: as much as it takes. The default is 600, enough for well over 100 MB of most pictures. "
     "The "
     "work is counted, not timed, so that the same files are left on every machine; an older one may take "
     "longer.",
     SetMaxTime, true, "a number of seconds, or 0"},
    {"no-log", 0, nullptr, "Log and preferences", "do not write to the results log", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOG", 0); }, true},
    {"log", 0, nullptr, "Log and preferences", "write the results log, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOG", 1); }, true},
    {"log-results-only", 0, nullptr, "Log and preferences", "log only files that were made smaller", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOGALL", 0); }, true},
    {"log-all", 0, nullptr, "Log and preferences", "log all files, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOGALL", 1); }, true},
    {"show-log", 0, nullptr, "Log and preferences", "print the results log and stop", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_ShowLog); }},
    {"clear-log", 0, nullptr, "Log and preferences", "empty the results log and stop", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_ClearLog); }, true},
    {"totals", 0, nullptr, "Log and preferences", "print what all runs have saved and stop", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Totals); }, true},
    {"reset-totals", 0, nullptr, "Log and preferences", "set the totals to zero and stop", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_ResetTotals); }, true},
    {"preferences", 0, nullptr, "Log and preferences", "print the preferences and stop",
     "Each with its value and where that comes from: machine-wide, this user, or built-in.",
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_ListPreferences); }},
    {"set", 0, "NAME=VALUE", "Log and preferences", "store a preference for all later runs",
     "Switches such as BACKUP are 0 or 1; --preferences lists them all. May be repeated, with or without "
     "NAMEs to work on.",
     StorePreference},
    {"contact-sheet", 0, "OUT", "Output", "draw all files on one new GIF, change none",
     "The first, middle and last frame of each file side by side, file after file from the top left; "
     "prints which is where. An existing OUT is never replaced.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mContactSheet, inPath); }},
    {"report", 0, "OUT", "Output", "write a web page about the run",
     "One HTML file with the totals, a table of the files, and each picture before and after, playing side "
     "by side. An existing OUT is replaced only if it is such a page.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mReport, inPath); }},
    {"report-limit", 0, "SIZE", "Output", "how much the page may hold in pictures: 8M",
     "A number alone is in MiB; up to 1024, default 32. Further pictures are left out; the page says how "
     "many.",
     SetReportLimit, true, "a size up to 1G, as 8M"},
    {"json", 0, nullptr, "Output", "print results as JSON, one object per line",
     "One for the run, one for each file as it is finished, then the totals, also with --quiet. The user "
     "guide "
     "lists the fields.",
     [](Settings& ioSettings, Argument) { return SetFormat(ioSettings, TermFormat::km_Json); }},
    {"csv", 0, nullptr, "Output", "print results as CSV, a line per file",
     "Also with --quiet. The user guide "
     "lists the columns.",
     [](Settings& ioSettings, Argument) { return SetFormat(ioSettings, TermFormat::km_Csv); }, true},
    {"quiet", 'q', nullptr, "Output", "print errors only", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mIsQuiet = true; }},
    {"verbose", 'v', nullptr, "Output", "also report how close each result looks",
     "For each file made smaller, how its most changed frame compares with the original: structural "
     "similarity (1 is identical) and the largest difference of a colour. Skipped files are listed too.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsVerbose = true; }},
    {nullptr, 'h', nullptr, "Output", "show the most used options", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_BriefHelp); }},
    {"help", 0, nullptr, "Output", "show the full help", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_FullHelp); }},
    {"version", 0, nullptr, "Output", "show the version", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Version); }},
});

} // namespace

std::span<const TermOption> TermGetOptions() {
    return km_Options;
}

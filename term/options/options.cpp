#include "term/options/options.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "win/batch/mizerpreferences.h"

namespace {

using Settings = TermSettings;
using Argument = const std::string&;

bool SetPreference(Settings& ioSettings, const char* inName, std::uint32_t inValue) {
    ioSettings.mPreferences[inName] = inValue;
    return true;
}

bool SetDetail(Settings& ioSettings, TermDetail inDetail) {
    ioSettings.mDetail = inDetail;
    return true;
}

bool SetTask(Settings& ioSettings, TermTask inTask) {
    if (TermIsHelp(inTask) || !TermIsHelp(ioSettings.mTask))
        ioSettings.mTask = inTask;
    return true;
}

/** @return whether the whole text is a number from inLeast to inMost */
bool ReadNumber(Argument inText, std::uint32_t inLeast, std::uint32_t inMost, std::uint32_t& outNumber) {
    const char* end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, outNumber);
    return error == std::errc() && stop == end && inLeast <= outNumber && outNumber <= inMost;
}

bool SetMemoryLimit(Settings& ioSettings, Argument inMebibytes) {
    constexpr std::uint64_t mebibyte = 1 << 20;
    std::uint32_t count = 0;
    if (!ReadNumber(inMebibytes, 1, UINT32_MAX, count))
        return false;
    ioSettings.mOptimizer.mMemoryLimit = count * mebibyte;
    return true;
}

bool SetTolerance(Settings& ioSettings, Argument inLevels) {
    return ReadNumber(inLevels, 0, km_DifferenceTolerance, ioSettings.mOptimizer.mTolerance);
}

/** NAME=VALUE */
bool StorePreference(Settings& ioSettings, Argument inText) {
    const std::size_t equals = std::min(inText.find('='), inText.size());
    const MizerPreference* preference = MizerFindPreference(inText.substr(0, equals));
    std::uint32_t value = 0;
    if (!preference || equals == inText.size() ||
        !ReadNumber(inText.substr(equals + 1), 0, preference->mLargest, value))
        return false;
    ioSettings.mStored[preference->mName] = value;
    return true;
}

/** "2000", bytes, or "1.5%". */
bool SetLeastSaving(Settings& ioSettings, Argument inText) {
    if (!inText.ends_with('%'))
        return ReadNumber(inText, 0, UINT32_MAX, ioSettings.mLeastSaving.mBytes);
    const char* end = inText.data() + inText.size() - 1;
    double& percentage = ioSettings.mLeastSaving.mPercentage;
    const auto [stop, error] = std::from_chars(inText.data(), end, percentage);
    return error == std::errc() && stop == end && percentage >= 0 && percentage <= 100;
}

bool SetReportLimit(Settings& ioSettings, Argument inMebibytes) {
    std::uint32_t count = 0;
    if (!ReadNumber(inMebibytes, 0, 1024, count))
        return false;
    ioSettings.mReportLimit = std::uint64_t{count} << 20;
    return true;
}

bool SetText(std::string& outText, Argument inText) {
    outText = inText;
    return !inText.empty();
}

constexpr auto km_Options = std::to_array<TermOption>({
    {"recursive", 'r', nullptr, "Files", "enter the subfolders of folders, too",
     "Links to folders are not followed.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsRecursive = true; }},
    {"files-from", 0, "FILE", "Files", "read more names from FILE, one to a line",
     "'-' stands for standard input: find pics -name '*.gif' | parvigif --files-from -",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mNamesFile, inPath); }},
    {"null", '0', nullptr, "Files", "the names in FILE end in NULs, see find -print0", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mNamesEndInNul = true; }, true},
    {"min-saving", 0, "N[%]", "Files", "leave files that would gain less than N bytes",
     "Or less than N percent of their size: --min-saving 2%. Such a file stays byte for byte as it is.",
     SetLeastSaving},
    {"skip-done", 0, nullptr, "Files", "pass over files that an earlier run was done with",
     "Remembers, by their contents, the files it is through with. Later runs with this option pass them "
     "over, so "
     "that a library can be gone over again and again and no picture loses a little more each time.",
     [](Settings& ioSettings, Argument) { return ioSettings.mSkipsDone = true; }},
    {"dry-run", 'n', nullptr, "Results", "only tell what a run would save",
     "Does all the work on private copies. Changes no file, makes no backup, writes no log, counts nothing.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsDryRun = true; }},
    {"output", 'o', "DIR", "Results", "write the new files to DIR, change no original",
     "DIR is made when it is missing. A folder's files go there under their names, with -r in the same "
     "subfolders. Files that do not get smaller are copied as they are, so that DIR holds them all. What "
     "stands in DIR already is never replaced.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mOutputFolder, inPath); }},
    {"keep-times", 0, nullptr, "Results", "keep the files' modification times", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mKeepsTimes = true; }, true},
    {"no-backup", 0, nullptr, "Backups", "do not keep the original as NAME.BAK",
     "Without this, the original of every file that is made smaller stands beside it, with .BAK "
     "appended to its whole name.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "BACKUP", 0); }},
    {"backup", 0, nullptr, "Backups", "keep the original, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "BACKUP", 1); }, true},
    {"overwrite-backups", 0, nullptr, "Backups", "replace a backup that exists",
     "Without this, the first backup stays, so that it holds the oldest original.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "OBACK", 1); }, true},
    {"keep-backups", 0, nullptr, "Backups", "keep older backups, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "OBACK", 0); }, true},
    {"restore", 0, nullptr, "Backups", "put backups back in the place of NAMEs",
     "Every backup is read as a GIF before it replaces the picture in one step; it stays. Of a folder or a "
     "pattern, the pictures that have one.",
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Restore); }},
    {"allow-crop", 0, nullptr, "Picture", "cut transparent borders off single images",
     "What is left stays at its place on the screen, whose size does not change. The frames of "
     "animations are always cut so.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 1); }, true},
    {"no-allow-crop", 0, nullptr, "Picture", "leave borders, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 0); }, true},
    {"lossless", 0, nullptr, "Picture", "change no displayed colour",
     "Saves less: only colours that nothing uses, pixels that the screen shows already and the way the "
     "data is packed. Without this a file is shown with at most 128 colours.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 1); }},
    {"no-lossless", 0, nullptr, "Picture", "let colours change, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 0); }, true},
    {"tolerance", 0, "N", "Picture", "leave less changed between frames, 0 to 28",
     "A pixel of an animation is not drawn again where the screen shows a colour that differs by at most N "
     "of 255 in red, green and blue. The usual 28 gives way by itself in a file where it would be seen.",
     SetTolerance},
    {"max-memory", 0, "MIB", "Picture", "leave files alone that need more memory",
     "In MiB, per file. The usual limit is half of the machine's memory, at least 1024.", SetMemoryLimit,
     true},
    {"no-log", 0, nullptr, "Log and preferences", "write nothing to the results log", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOG", 0); }},
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
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Totals); }},
    {"preferences", 0, nullptr, "Log and preferences", "print the preferences and stop",
     "Each with its value and whether that is machine-wide, this user's, or built in.",
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_ListPreferences); }},
    {"set", 0, "NAME=VALUE", "Log and preferences", "store a preference for all runs to come",
     "A switch such as BACKUP is 0 or 1; --preferences lists them all. May be given several times, with or "
     "without NAMEs to work on.",
     StorePreference},
    {"contact-sheet", 0, "OUT", "Output", "change no file, show all of them on a new GIF",
     "Draws the first, the middle and the last frame of every file side by side, file by file from the top "
     "left, and prints which is where. An OUT that exists is never replaced.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mContactSheet, inPath); }},
    {"report", 0, "OUT", "Output", "write a page for the browser about the run",
     "One HTML file with the totals, a table of the files, and of each the picture before and after, playing "
     "side by side. An OUT that exists is replaced only when it is such a page.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mReport, inPath); }},
    {"report-limit", 0, "MIB", "Output", "pictures that the page may hold, in MiB",
     "0 to 1024, usually 32. Pictures that do not fit any more are left out, which the page tells.",
     SetReportLimit, true},
    {"json", 0, nullptr, "Output", "print results as JSON, an object per line",
     "An object for each file as it is done, then one for all of them; the user guide tells their fields. "
     "With --quiet, too.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsJson = true; }},
    {"quiet", 'q', nullptr, "Output", "print errors only", nullptr,
     [](Settings& ioSettings, Argument) { return SetDetail(ioSettings, TermDetail::km_Quiet); }},
    {"verbose", 'v', nullptr, "Output", "tell also how close the result looks",
     "For each file made smaller, how its most changed frame compares with the original: structural "
     "similarity (1 is the same) and the largest difference of a colour. Names files passed over, too.",
     [](Settings& ioSettings, Argument) { return SetDetail(ioSettings, TermDetail::km_Verbose); }},
    {nullptr, 'h', nullptr, "Output", "show a short help", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_BriefHelp); }},
    {"help", 0, nullptr, "Output", "show the whole help", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_FullHelp); }},
    {"version", 0, nullptr, "Output", "show the version", nullptr,
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Version); }},
});

} // namespace

std::span<const TermOption> TermGetOptions() {
    return km_Options;
}

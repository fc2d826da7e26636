#include "term/options/options.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "term/text/fillin.h"
#include "win/batch/mizerpreferences.h"

namespace {

using Settings = TermSettings;
using Argument = const std::string&;

bool SetPreference(Settings& ioSettings, const char* inName, std::uint32_t inValue) {
    ioSettings.mPreferences[inName] = inValue;
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

constexpr auto km_LosslessText = TermFillIn<km_MostColours>(
    "Saves less: only unused colours, pixels that the screen shows already, and better packing. Without "
    "this, a file made smaller has at most # colours.");
constexpr auto km_ToleranceBrief =
    TermFillIn<km_DifferenceTolerance>("largest colour difference ignored, 0 to #");
constexpr auto km_ToleranceText = TermFillIn<km_DifferenceTolerance>(
    "Between frames of an animation: a pixel is not drawn again while the screen shows a colour within N "
    "of 255 in red, green and blue. The default, #, is lowered for a file in which it would show.");

constexpr auto km_Options = std::to_array<TermOption>({
    {"recursive", 'r', nullptr, "Files", "search subfolders too", "Links to folders are not followed.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsRecursive = true; }},
    {"files-from", 0, "FILE", "Files", "read more names from FILE, one per line",
     "- is standard input: find pics -name '*.gif' | parvigif --files-from -",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mNamesFile, inPath); }},
    {"null", '0', nullptr, "Files", "names in FILE end with a NUL, as from find -print0", nullptr,
     [](Settings& ioSettings, Argument) { return ioSettings.mNamesEndInNul = true; }, true},
    {"min-saving", 0, "N[%]", "Files", "leave files that would shrink by less than N bytes",
     "Or by less than N percent: --min-saving 2%. Such a file stays byte for byte as it is.", SetLeastSaving},
    {"skip-done", 0, nullptr, "Files", "skip files an earlier run has finished with",
     "Finished files are remembered by their contents, and later runs with this option skip them: a "
     "library can be swept again and again, and no picture loses a little more each time.",
     [](Settings& ioSettings, Argument) { return ioSettings.mSkipsDone = true; }},
    {"dry-run", 'n', nullptr, "Results", "only report what would be saved",
     "All the work is done on private copies: no file is changed, backed up, logged or counted.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsDryRun = true; }},
    {"output", 'o', "DIR", "Results", "write the new files to DIR, leave the originals",
     "DIR is created if missing. A folder's files go there under their own names, with -r into the same "
     "subfolders. Files that do not get smaller are copied as they are, so that DIR holds them all. "
     "Nothing already in DIR is ever replaced.",
     [](Settings& ioSettings, Argument inPath) { return SetText(ioSettings.mOutputFolder, inPath); }},
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
    {"restore", 0, nullptr, "Backups", "restore NAMEs from their backups",
     "Each backup is read as a GIF to its end before it replaces the picture, in one step, and is kept. "
     "With a folder or a pattern: every picture that has one. A picture that may have been edited since it "
     "was made smaller is kept as a further backup. --dry-run shows what would happen.",
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Restore); }},
    {"allow-crop", 0, nullptr, "Picture", "trim transparent borders of still images",
     "The rest keeps its place on the screen, whose size stays the same. Frames of animations are always "
     "trimmed.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 1); }, true},
    {"no-allow-crop", 0, nullptr, "Picture", "keep borders, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 0); }, true},
    {"lossless", 0, nullptr, "Picture", "change no displayed colour", km_LosslessText.data(),
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 1); }},
    {"no-lossless", 0, nullptr, "Picture", "let colours change, whatever the preferences say", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 0); }, true},
    {"tolerance", 0, "N", "Picture", km_ToleranceBrief.data(), km_ToleranceText.data(), SetTolerance},
    {"max-memory", 0, "MIB", "Picture", "leave files that need more memory",
     "In MiB, per file. The default is half of the machine's memory, but at least 1024.", SetMemoryLimit,
     true},
    {"no-log", 0, nullptr, "Log and preferences", "do not write to the results log", nullptr,
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
    {"report-limit", 0, "MIB", "Output", "how much the page may hold in pictures, in MiB",
     "0 to 1024, default 32. Further pictures are left out; the page says how many.", SetReportLimit, true},
    {"json", 0, nullptr, "Output", "print results as JSON, one object per line",
     "One for each file as it is finished, then one for the whole run, also with --quiet. The user guide "
     "lists the fields.",
     [](Settings& ioSettings, Argument) { return ioSettings.mIsJson = true; }},
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

#include "term/options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "win/mizerpreferences.h"

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

bool IsHelp(TermTask inTask) {
    return inTask == TermTask::km_BriefHelp || inTask == TermTask::km_FullHelp ||
           inTask == TermTask::km_Version;
}

bool SetTask(Settings& ioSettings, TermTask inTask) {
    if (IsHelp(inTask) || !IsHelp(ioSettings.mTask))
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

constexpr auto kOptions = std::to_array<TermOption>({
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
    {"overwrite-backups", 0, nullptr, "Backups", "replace a backup that exists",
     "Without this, the first backup stays, so that it holds the oldest original.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "OBACK", 1); }, true},
    {"restore", 0, nullptr, "Backups", "put backups back in the place of NAMEs",
     "Every backup is read as a GIF before it replaces the picture in one step; it stays. Of a folder or a "
     "pattern, the pictures that have one.",
     [](Settings& ioSettings, Argument) { return SetTask(ioSettings, TermTask::km_Restore); }},
    {"allow-crop", 0, nullptr, "Picture", "cut transparent borders off single images",
     "What is left stays at its place on the screen, whose size does not change. The frames of "
     "animations are always cut so.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "ALLOWCROP", 1); }, true},
    {"lossless", 0, nullptr, "Picture", "change no displayed colour",
     "Saves less: only colours that nothing uses, pixels that the screen shows already and the way the "
     "data is packed. Without this a file is shown with at most 128 colours.",
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOSSLESS", 1); }},
    {"tolerance", 0, "N", "Picture", "leave less changed between frames, 0 to 28",
     "A pixel of an animation is not drawn again where the screen shows a colour that differs by at most N "
     "of 255 in red, green and blue. The usual 28 gives way by itself in a file where it would be seen.",
     SetTolerance},
    {"max-memory", 0, "MIB", "Picture", "leave files alone that need more memory",
     "In MiB, per file. The usual limit is half of the machine's memory, at least 1024.", SetMemoryLimit,
     true},
    {"no-log", 0, nullptr, "Log and preferences", "write nothing to the results log", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOG", 0); }},
    {"log-results-only", 0, nullptr, "Log and preferences", "log only files that were made smaller", nullptr,
     [](Settings& ioSettings, Argument) { return SetPreference(ioSettings, "LOGALL", 0); }, true},
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
     "A switch such as BACKUP is 0 or 1. May be given several times, with or without NAMEs to work on.",
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

class Parser {
public:
    Parser(const std::vector<std::string>& inArguments, TermSettings& outSettings)
        : mArguments(inArguments), mSettings(outSettings) {}

    void Parse() {
        bool optionsEnded = false;
        while (mNext < mArguments.size()) {
            const std::string& argument = mArguments[mNext++];
            if (optionsEnded || argument.size() < 2 || argument[0] != '-')
                mSettings.mNames.push_back(argument);
            else if (argument == "--")
                optionsEnded = true;
            else if (argument[1] == '-')
                ParseLong(argument);
            else
                ParseShort(argument);
        }
    }

    const std::string& GetError() const { return mError; }

private:
    /** --name, --name=value or --name value. */
    void ParseLong(const std::string& inArgument) {
        const std::size_t equals = inArgument.find('=');
        const std::string typed = inArgument.substr(0, equals);
        const auto option = std::find_if(kOptions.begin(), kOptions.end(), [&](const TermOption& inOption) {
            return inOption.mName && typed.substr(2) == inOption.mName;
        });
        if (option == kOptions.end())
            Fail("unknown option '" + typed + "'");
        else if (option->mArgument)
            Apply(*option, typed, equals == std::string::npos ? TakeNext() : inArgument.substr(equals + 1));
        else if (equals != std::string::npos)
            Fail("option '" + typed + "' takes no value");
        else
            Apply(*option, typed, "");
    }

    /** -a, several as -ab, and a value as -cvalue or -c value. */
    void ParseShort(const std::string& inArgument) {
        for (std::size_t i = 1; i < inArgument.size(); ++i) {
            const std::string typed = {'-', inArgument[i]};
            const auto option =
                std::find_if(kOptions.begin(), kOptions.end(),
                             [&](const TermOption& inOption) { return inOption.mShort == inArgument[i]; });
            if (option == kOptions.end())
                return Fail("unknown option '" + typed + "'");
            if (option->mArgument)
                return Apply(*option, typed,
                             i + 1 < inArgument.size() ? inArgument.substr(i + 1) : TakeNext());
            Apply(*option, typed, "");
        }
    }

    std::optional<std::string> TakeNext() {
        if (mNext == mArguments.size())
            return std::nullopt;
        return mArguments[mNext++];
    }

    void Apply(const TermOption& inOption, const std::string& inTyped,
               const std::optional<std::string>& inValue) {
        if (!inValue)
            Fail("option '" + inTyped + "' needs a value: " + inOption.mArgument);
        else if (!inOption.mApply(mSettings, *inValue))
            Fail("option '" + inTyped + "' cannot be '" + *inValue + "'");
    }

    /** The first mistake is the one to tell. */
    void Fail(const std::string& inError) {
        if (mError.empty())
            mError = inError;
    }

    const std::vector<std::string>& mArguments;
    TermSettings& mSettings;
    std::size_t mNext = 0;
    std::string mError;
};

/** @return what is wrong with how many names there are, or nothing */
std::string CheckNames(const Settings& inSettings) {
    const bool needsNames =
        inSettings.mTask == TermTask::km_Process || inSettings.mTask == TermTask::km_Restore;
    const std::vector<std::string>& names = inSettings.mNames;
    const bool hasNames = !names.empty() || !inSettings.mNamesFile.empty();
    if (needsNames && !hasNames)
        return "no file named";
    if (!needsNames && hasNames)
        return "no file can be worked on here: '" + (names.empty() ? inSettings.mNamesFile : names.front()) +
               "'";
    const bool hasStandardInput = std::find(names.begin(), names.end(), "-") != names.end();
    if (hasStandardInput && (names.size() > 1 || !inSettings.mNamesFile.empty()))
        return "'-' must be the only name";
    return {};
}

/** @return which two ways of working do not go together, in words, or nothing */
std::string CheckModes(const Settings& inSettings) {
    std::vector<std::string> modes;
    const auto add = [&](bool inIsAsked, const char* inName) {
        if (inIsAsked)
            modes.emplace_back(inName);
    };
    const bool restores = inSettings.mTask == TermTask::km_Restore;
    add(inSettings.IsFilter() && !inSettings.mIsDryRun, "-");
    add(restores, "--restore");
    add(inSettings.mIsDryRun, "--dry-run");
    add(!inSettings.mOutputFolder.empty(), "--output");
    add(inSettings.mSkipsDone && !inSettings.mIsDryRun, "--skip-done");
    add(!inSettings.mContactSheet.empty(), "--contact-sheet");
    const bool isBatch = !restores && inSettings.mContactSheet.empty();
    add(!isBatch && !inSettings.mReport.empty(), "--report");
    add(!isBatch && inSettings.mIsJson, "--json");
    add(restores && !inSettings.mNamesFile.empty(), "--files-from");
    return modes.size() < 2 ? "" : "'" + modes[0] + "' does not go with '" + modes[1] + "'";
}

/** @return what is wrong with all arguments together, or nothing */
std::string CheckSettings(const Settings& inSettings) {
    const std::string error = CheckNames(inSettings);
    return error.empty() ? CheckModes(inSettings) : error;
}

} // namespace

std::span<const TermOption> TermGetOptions() {
    return kOptions;
}

bool TermParseArguments(const std::vector<std::string>& inArguments, TermSettings& outSettings,
                        std::string& outError) {
    outSettings = TermSettings();
    Parser parser(inArguments, outSettings);
    parser.Parse();
    if (IsHelp(outSettings.mTask)) {
        outSettings.mStored.clear();
        return true;
    }
    if (outSettings.mTask == TermTask::km_Process && outSettings.mNames.empty() &&
        outSettings.mNamesFile.empty() && !outSettings.mStored.empty())
        outSettings.mTask = TermTask::km_Store;
    outError = parser.GetError().empty() ? CheckSettings(outSettings) : parser.GetError();
    return outError.empty();
}

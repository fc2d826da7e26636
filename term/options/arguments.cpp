#include "term/options/arguments.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

#include "term/options/mistakes.h"

namespace {

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
    /** --name, --name=value or --name value; a name may be cut short as long as only one option begins so. */
    void ParseLong(const std::string& inArgument) {
        const std::size_t equals = inArgument.find('=');
        const std::string typed = inArgument.substr(0, equals);
        const std::vector<const TermOption*> meant = TermFindOptions(std::string_view(typed).substr(2));
        if (meant.size() != 1)
            return Fail(TermUnknownOption(typed, meant));
        const TermOption& option = *meant.front();
        const std::string name = std::string("--") + option.mName;
        if (option.mArgument)
            Apply(option, name, equals == std::string::npos ? TakeNext() : inArgument.substr(equals + 1));
        else if (equals != std::string::npos)
            Fail("option '" + name + "' takes no value");
        else
            Apply(option, name, "");
    }

    /** -a, several as -ab, and a value as -cvalue or -c value. */
    void ParseShort(const std::string& inArgument) {
        for (std::size_t i = 1; i < inArgument.size(); ++i) {
            const std::string typed = {'-', inArgument[i]};
            const TermOption* const option = FindShort(inArgument[i]);
            if (!option)
                return Fail(TermUnknownLetter(typed, inArgument));
            if (option->mArgument)
                return Apply(*option, typed,
                             i + 1 < inArgument.size() ? inArgument.substr(i + 1) : TakeNext());
            Apply(*option, typed, "");
        }
    }

    /** @return null when there is none */
    static const TermOption* FindShort(char inLetter) {
        const auto options = TermGetOptions();
        const auto option = std::find_if(options.begin(), options.end(), [&](const TermOption& inOption) {
            return inOption.mShort == inLetter;
        });
        return option == options.end() ? nullptr : &*option;
    }

    std::optional<std::string> TakeNext() {
        if (mNext == mArguments.size())
            return std::nullopt;
        return mArguments[mNext++];
    }

    void Apply(const TermOption& inOption, const std::string& inTyped,
               const std::optional<std::string>& inValue) {
        const TermTask before = mSettings.mTask;
        if (!inValue)
            Fail("option '" + inTyped + "' needs a value: " + inOption.mArgument);
        else if (!inOption.mApply(mSettings, *inValue))
            Fail(TermBadValue(inOption, inTyped, *inValue));
        if (mSettings.mTask != before)
            mSettings.mTaskName = inTyped;
    }

    /** Keeps the first mistake, which is the one reported. */
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
std::string CheckNames(const TermSettings& inSettings) {
    const bool needsNames =
        inSettings.mTask == TermTask::km_Process || inSettings.mTask == TermTask::km_Restore;
    const std::vector<std::string>& names = inSettings.mNames;
    const bool hasNames = !names.empty() || !inSettings.mNamesFile.empty();
    if (needsNames && !hasNames)
        return "name at least one GIF file or folder";
    if (!needsNames && hasNames)
        return inSettings.mTaskName + " takes no file names, but there is '" +
               (names.empty() ? inSettings.mNamesFile : names.front()) + "'";
    const bool hasStandardInput = std::find(names.begin(), names.end(), "-") != names.end();
    if (hasStandardInput && (names.size() > 1 || !inSettings.mNamesFile.empty()))
        return "'-' must be the only name";
    if (inSettings.mOutputFolder.empty() && (inSettings.mUpdatesOutput || inSettings.mReplacesOutput))
        return inSettings.mUpdatesOutput ? "'--update' is about the results of '--output'"
                                         : "'--force' is about the results of '--output'";
    if (inSettings.mNamesEndInNul && inSettings.mNamesFile.empty())
        return "'--null' is about the names of '--files-from'";
    return {};
}

/** @return which two ways of working do not go together, in words, or nothing */
std::string CheckModes(const TermSettings& inSettings) {
    std::vector<std::string> modes;
    const auto add = [&](bool inIsAsked, const char* inName) {
        if (inIsAsked)
            modes.emplace_back(inName);
    };
    const bool restores = inSettings.mTask == TermTask::km_Restore;
    add(inSettings.IsFilter() && !inSettings.mIsDryRun, "-");
    add(restores, "--restore");
    add(inSettings.mIsDryRun && !restores, "--dry-run");
    add(!inSettings.mOutputFolder.empty(), "--output");
    add(inSettings.mSkipsDone && !inSettings.mIsDryRun, "--skip-done");
    add(!inSettings.mContactSheet.empty(), "--contact-sheet");
    if (restores && !inSettings.mReport.empty())
        return "'--report' shows what was made smaller; leave it out, or list what is restored with '--json'";
    add(!inSettings.mContactSheet.empty() && !inSettings.mReport.empty(), "--report");
    add(!inSettings.mContactSheet.empty() && inSettings.mFormat == TermFormat::km_Json, "--json");
    add((restores || !inSettings.mContactSheet.empty()) && inSettings.mFormat == TermFormat::km_Csv, "--csv");
    if (inSettings.mSkipsDone && inSettings.mTriesAgain)
        modes = {"--skip-done", "--again"};
    add(restores && !inSettings.mNamesFile.empty(), "--files-from");
    if (inSettings.mIsQuiet && inSettings.mIsVerbose)
        modes = {"--quiet", "--verbose"};
    return modes.size() < 2 ? "" : "'" + modes[0] + "' does not go with '" + modes[1] + "'";
}

/** @return which file is named for something else than what it will hold, or nothing */
std::string CheckKinds(const TermSettings& inSettings) {
    struct Output {
        const char* mOption;
        const std::string& mName;
        const char* mEnd;
    };
    const Output outputs[] = {{"--contact-sheet", inSettings.mContactSheet, ".gif"},
                              {"--report", inSettings.mReport, ".html"},
                              {"--output", inSettings.mOutputFolder, ".gif"}};
    for (const Output& output : outputs) {
        const std::size_t dot = output.mName.rfind('.');
        std::string end = dot == std::string::npos ? "" : output.mName.substr(dot);
        std::transform(end.begin(), end.end(), end.begin(),
                       [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        constexpr std::string_view kinds =
            " .gif .html .png .jpg .jpeg .webp .avif .apng .mp4 .csv .json .txt ";
        if (end != output.mEnd && !end.empty() && kinds.find(" " + end + " ") != std::string::npos)
            return std::string(output.mOption) + " makes a file that ends in " + output.mEnd + ": name it '" +
                   output.mName.substr(0, dot) + output.mEnd + "', not '" + output.mName + "'";
    }
    return {};
}

/** @return what is wrong with all arguments together, or nothing */
std::string CheckSettings(const TermSettings& inSettings) {
    for (const auto check : {CheckNames, CheckModes, CheckKinds})
        if (std::string error = check(inSettings); !error.empty())
            return error;
    return {};
}

} // namespace

bool TermParseArguments(const std::vector<std::string>& inArguments, TermSettings& outSettings,
                        std::string& outError) {
    outSettings = TermSettings();
    outSettings.mArguments = inArguments;
    Parser parser(inArguments, outSettings);
    parser.Parse();
    if (TermIsHelp(outSettings.mTask)) {
        outSettings.mStored.clear();
        return true;
    }
    if (outSettings.mTask == TermTask::km_Process && outSettings.mNames.empty() &&
        outSettings.mNamesFile.empty() && !outSettings.mStored.empty())
        outSettings.mTask = TermTask::km_Store;
    outError = parser.GetError().empty() ? CheckSettings(outSettings) : parser.GetError();
    return outError.empty();
}

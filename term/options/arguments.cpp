#include "term/options/arguments.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string_view>

namespace {

/** How many letters are to be put in, left out or changed to make one text of the other (Levenshtein). */
std::size_t CountSlips(std::string_view inTyped, std::string_view inMeant) {
    std::vector<std::size_t> slips(inMeant.size() +
                                   1); // for what was seen of the one, by length of the other
    std::iota(slips.begin(), slips.end(), 0U);
    for (const char typed : inTyped) {
        std::size_t before = slips[0]++;
        for (std::size_t i = 0; i < inMeant.size(); ++i) {
            const std::size_t changed = before + (typed == inMeant[i] ? 0 : 1);
            before = slips[i + 1];
            slips[i + 1] = std::min({changed, before + 1, slips[i] + 1});
        }
    }
    return slips.back();
}

/** A question behind the complaint about an unknown option, or nothing when none is near. */
std::string AskWhatWasMeant(std::string_view inTyped) {
    std::string_view nearest;
    std::size_t least = inTyped.size() / 3 + 1; // a letter in three may be wrong
    for (const TermOption& option : TermGetOptions()) {
        const std::string_view name = option.mName ? option.mName : "";
        if (const std::size_t slips = CountSlips(inTyped, name); !name.empty() && slips < least) {
            nearest = name;
            least = slips;
        }
    }
    return nearest.empty() ? "" : ": did you mean '--" + std::string(nearest) + "'?";
}

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
        const TermOption* const option = Find(
            [&](const TermOption& inOption) { return inOption.mName && typed.substr(2) == inOption.mName; });
        if (!option)
            Fail("unknown option '" + typed + "'" + AskWhatWasMeant(typed.substr(2)));
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
            const TermOption* const option =
                Find([&](const TermOption& inOption) { return inOption.mShort == inArgument[i]; });
            if (!option)
                return Fail("unknown option '" + typed + "'");
            if (option->mArgument)
                return Apply(*option, typed,
                             i + 1 < inArgument.size() ? inArgument.substr(i + 1) : TakeNext());
            Apply(*option, typed, "");
        }
    }

    /** @return null when there is none */
    template <typename Predicate>
    static const TermOption* Find(Predicate inIsIt) {
        const auto options = TermGetOptions();
        const auto option = std::find_if(options.begin(), options.end(), inIsIt);
        return option == options.end() ? nullptr : &*option;
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
std::string CheckNames(const TermSettings& inSettings) {
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
    const bool isBatch = !restores && inSettings.mContactSheet.empty();
    add(!isBatch && !inSettings.mReport.empty(), "--report");
    add(!inSettings.mContactSheet.empty() && inSettings.mIsJson, "--json");
    add(restores && !inSettings.mNamesFile.empty(), "--files-from");
    if (inSettings.mIsQuiet && inSettings.mIsVerbose)
        modes = {"--quiet", "--verbose"};
    return modes.size() < 2 ? "" : "'" + modes[0] + "' does not go with '" + modes[1] + "'";
}

/** @return what is wrong with all arguments together, or nothing */
std::string CheckSettings(const TermSettings& inSettings) {
    const std::string error = CheckNames(inSettings);
    return error.empty() ? CheckModes(inSettings) : error;
}

} // namespace

bool TermParseArguments(const std::vector<std::string>& inArguments, TermSettings& outSettings,
                        std::string& outError) {
    outSettings = TermSettings();
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

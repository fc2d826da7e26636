#include "term/options.h"

#include <algorithm>
#include <array>

namespace {

constexpr auto kOptions = std::to_array<TermOption>({
    {"no-backup", 0, nullptr, "Backups", "do not keep the original as NAME.BAK",
     "Without this, the original of every file that is made smaller stands beside it, with .BAK "
     "appended to its whole name.",
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mPreferences["BACKUP"] = 0; }},
    {"overwrite-backups", 0, nullptr, "Backups", "replace a backup that exists",
     "Without this, the first backup stays, so that it holds the oldest original.",
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mPreferences["OBACK"] = 1; }},
    {"allow-crop", 0, nullptr, "Picture", "cut transparent borders off single images",
     "The image is then placed on the same screen at the same spot. Animations are always cropped so.",
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mPreferences["ALLOWCROP"] = 1; }},
    {"no-log", 0, nullptr, "Log", "write nothing to the results log", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mPreferences["LOG"] = 0; }},
    {"log-results-only", 0, nullptr, "Log", "log only files that were made smaller", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mPreferences["LOGALL"] = 0; }},
    {"quiet", 'q', nullptr, "Output", "print errors only", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mDetail = TermDetail::km_Quiet; }},
    {"verbose", 'v', nullptr, "Output", "tell also which files were passed over, and why", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mDetail = TermDetail::km_Verbose; }},
    {nullptr, 'h', nullptr, "Output", "show a short help", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mTask = TermTask::km_BriefHelp; }},
    {"help", 0, nullptr, "Output", "show the whole help", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mTask = TermTask::km_FullHelp; }},
    {"version", 0, nullptr, "Output", "show the version", nullptr,
     [](TermSettings& ioSettings, const std::string&) { ioSettings.mTask = TermTask::km_Version; }},
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
        const std::string name = inArgument.substr(2, equals == std::string::npos ? equals : equals - 2);
        const auto option = std::find_if(kOptions.begin(), kOptions.end(), [&](const TermOption& inOption) {
            return inOption.mName && name == inOption.mName;
        });
        if (option == kOptions.end())
            return Fail("unknown option '--" + name + "'");
        if (!option->mArgument && equals != std::string::npos)
            return Fail("option '--" + name + "' takes no value");
        if (!option->mArgument)
            return option->mApply(mSettings, "");
        if (equals != std::string::npos)
            return option->mApply(mSettings, inArgument.substr(equals + 1));
        ApplyWithNext(*option, "--" + name);
    }

    /** -a, several as -ab, and a value as -cvalue or -c value. */
    void ParseShort(const std::string& inArgument) {
        for (std::size_t i = 1; i < inArgument.size(); ++i) {
            const char letter = inArgument[i];
            const auto option =
                std::find_if(kOptions.begin(), kOptions.end(),
                             [&](const TermOption& inOption) { return inOption.mShort == letter; });
            if (option == kOptions.end())
                return Fail(std::string("unknown option '-") + letter + "'");
            if (!option->mArgument)
                option->mApply(mSettings, "");
            else if (i + 1 < inArgument.size())
                return option->mApply(mSettings, inArgument.substr(i + 1));
            else
                return ApplyWithNext(*option, std::string("-") + letter);
        }
    }

    void ApplyWithNext(const TermOption& inOption, const std::string& inTyped) {
        if (mNext == mArguments.size())
            return Fail("option '" + inTyped + "' needs a value: " + inOption.mArgument);
        inOption.mApply(mSettings, mArguments[mNext++]);
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

} // namespace

std::span<const TermOption> TermGetOptions() {
    return kOptions;
}

bool TermParseArguments(const std::vector<std::string>& inArguments, TermSettings& outSettings,
                        std::string& outError) {
    outSettings = TermSettings();
    Parser parser(inArguments, outSettings);
    parser.Parse();
    if (outSettings.mTask != TermTask::km_Process)
        return true;
    outError = parser.GetError();
    if (outError.empty() && outSettings.mNames.empty())
        outError = "no file named";
    return outError.empty();
}

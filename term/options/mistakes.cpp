#include "term/options/mistakes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>
#include <utility>

#include "win/batch/mizerpreferences.h"

namespace {

/** What other programs call something that this one does in another way, or always. */
struct Habit {
    std::string_view mTyped;
    const char* mHint;
};

constexpr auto km_Habits = std::to_array<Habit>({
    {"-O", "there are no levels: every run does all it can"},
    {"--optimize", "there are no levels: every run does all it can"},
    {"--lossy", "that is the default; --tolerance sets how much may change"},
    {"--colors", "128 is the most by default, and --lossless keeps them all"},
    {"--colours", "128 is the most by default, and --lossless keeps them all"},
    {"-V", "did you mean '--version'?"},
    {"-b", "files are replaced in place by default"},
    {"-i", "files are replaced in place by default"},
    {"--batch", "files are replaced in place by default"},
    {"--in-place", "files are replaced in place by default"},
    {"-k", "the original is kept as NAME.BAK by default"},
    {"--keep", "the original is kept as NAME.BAK by default"},
    {"-f", "did you mean '--force'?"},
});

std::string_view NameOf(const TermOption& inOption) {
    return inOption.mName ? inOption.mName : "";
}

/** How many letters are to be put in, left out, changed, or exchanged with the next one to make one text of
 *  the other. */
std::size_t CountSlips(std::string_view inTyped, std::string_view inMeant) {
    // Of the beginnings of the one text, by the length of the other: up to the last letter but one, up to the
    // last, and with it.
    std::vector<std::size_t> older, old, slips(inMeant.size() + 1);
    std::iota(slips.begin(), slips.end(), 0U);
    for (std::size_t t = 0; t < inTyped.size(); ++t) {
        older = std::exchange(old, slips);
        slips[0] = t + 1;
        for (std::size_t m = 0; m < inMeant.size(); ++m) {
            const std::size_t changed = old[m] + (inTyped[t] == inMeant[m] ? 0 : 1);
            slips[m + 1] = std::min({changed, old[m + 1] + 1, slips[m] + 1});
            if (t > 0 && m > 0 && inTyped[t] == inMeant[m - 1] && inTyped[t - 1] == inMeant[m])
                slips[m + 1] = std::min(slips[m + 1], older[m - 1] + 1);
        }
    }
    return slips.back();
}

std::string_view FindNearest(std::string_view inTyped) {
    std::string_view nearest;
    std::size_t least = inTyped.size() / 3 + 1; // a letter in three may be wrong
    for (const TermOption& option : TermGetOptions()) {
        const std::string_view name = NameOf(option);
        if (const std::size_t slips = CountSlips(inTyped, name); !name.empty() && slips < least) {
            nearest = name;
            least = slips;
        }
    }
    return nearest;
}

const char* FindHabit(std::string_view inTyped) {
    const auto habit = std::find_if(km_Habits.begin(), km_Habits.end(),
                                    [&](const Habit& inEntry) { return inEntry.mTyped == inTyped; });
    return habit == km_Habits.end() ? nullptr : habit->mHint;
}

bool LooksLikePicture(std::string_view inArgument) {
    constexpr std::string_view extension = ".gif";
    if (inArgument.size() <= extension.size())
        return false;
    inArgument.remove_prefix(inArgument.size() - extension.size());
    return std::equal(inArgument.begin(), inArgument.end(), extension.begin(),
                      [](unsigned char a, char b) { return std::tolower(a) == b; });
}

std::string BadPreference(const std::string& inValue) {
    const std::size_t equals = inValue.find('=');
    const MizerPreference* const preference = MizerFindPreference(inValue.substr(0, equals));
    if (preference && equals != std::string::npos)
        return std::string(preference->mName) + " must be " +
               (preference->mLargest == 1 ? "0 or 1"
                                          : "a number up to " + std::to_string(preference->mLargest)) +
               ", not '" + inValue.substr(equals + 1) + "'";
    if (preference)
        return "--set needs a value, too: " + inValue + "=0";
    std::string names;
    for (const MizerPreference& entry : MizerGetPreferences())
        names += (names.empty() ? "" : ", ") + std::string(entry.mName);
    return "no preference '" + inValue.substr(0, equals) + "'; there are " + names;
}

} // namespace

std::vector<const TermOption*> TermFindOptions(std::string_view inName) {
    std::vector<const TermOption*> found;
    if (inName.empty())
        return found;
    for (const TermOption& option : TermGetOptions()) {
        if (NameOf(option) == inName)
            return {&option};
        if (NameOf(option).starts_with(inName))
            found.push_back(&option);
    }
    return found;
}

std::string TermUnknownOption(const std::string& inTyped, const std::vector<const TermOption*>& inMeant) {
    const std::string unknown = "unknown option '" + inTyped + "'";
    if (const char* const hint = FindHabit(inTyped))
        return unknown + ": " + hint;
    std::string names;
    for (const TermOption* option : inMeant)
        names += (names.empty() ? "'--" : ", '--") + std::string(option->mName) + "'";
    if (!names.empty())
        return "option '" + inTyped + "' may be " + names;
    const std::string_view nearest = FindNearest(std::string_view(inTyped).substr(2));
    return unknown + (nearest.empty() ? "" : ": did you mean '--" + std::string(nearest) + "'?");
}

std::string TermUnknownLetter(const std::string& inTyped, const std::string& inArgument) {
    const std::string unknown = "unknown option '" + inTyped + "'";
    if (LooksLikePicture(inArgument))
        return unknown + ": for a file, write ./" + inArgument + " or put -- before the names";
    const char* const hint = FindHabit(inTyped);
    return unknown + (hint ? std::string(": ") + hint : "");
}

std::string TermBadValue(const TermOption& inOption, const std::string& inTyped, const std::string& inValue) {
    if (NameOf(inOption) == "set")
        return BadPreference(inValue);
    return inTyped + " must be " + (inOption.mNeeds ? inOption.mNeeds : "a name") + ", not '" + inValue + "'";
}

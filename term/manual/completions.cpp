#include "term/manual/completions.h"

#include <initializer_list>
#include <string_view>

#include "term/options/options.h"
#include "win/batch/mizerpreferences.h"

namespace {

/** What a shell may offer as an option's value. */
enum class Value { km_None, km_Anything, km_File, km_Folder, km_Preference };

Value GetValue(const TermOption& inOption) {
    if (!inOption.mArgument)
        return Value::km_None;
    const std::string_view argument = inOption.mArgument;
    if (argument == "FILE" || argument == "OUT")
        return Value::km_File;
    if (argument == "NAME=VALUE")
        return Value::km_Preference;
    return argument == "DIR" ? Value::km_Folder : Value::km_Anything;
}

/** The preferences that are switches, each with one end or both behind its name. */
std::string GetSwitches(const char* inParting, std::initializer_list<const char*> inEnds) {
    std::string words;
    for (const MizerPreference& preference : MizerGetPreferences()) {
        if (preference.mLargest != 1)
            continue;
        for (const char* end : inEnds)
            words += (words.empty() ? "" : inParting) + std::string(preference.mName) + end;
    }
    return words;
}

/** Both spellings of an option that has both, with something between them. */
std::string Spellings(const TermOption& inOption, const char* inBetween) {
    const std::string shortOne = inOption.mShort ? std::string("-") + inOption.mShort : "";
    const std::string longOne = inOption.mName ? std::string("--") + inOption.mName : "";
    return shortOne + (shortOne.empty() || longOne.empty() ? "" : inBetween) + longOne;
}

std::string Replaced(std::string_view inText, char inCharacter, const char* inBy) {
    std::string text;
    for (const char character : inText)
        text += character == inCharacter ? std::string(inBy) : std::string(1, character);
    return text;
}

/** One case of the bash script for all options whose values are of a kind; nothing when there are none. */
std::string BashCase(Value inValue, const std::string& inCommands) {
    std::string patterns;
    for (const TermOption& option : TermGetOptions()) {
        if (GetValue(option) == inValue)
            patterns += (patterns.empty() ? "" : "|") + Spellings(option, "|");
    }
    return patterns.empty() ? "" : "    " + patterns + ")\n" + inCommands + "        return ;;\n";
}

std::string ZshArgument(const TermOption& inOption) {
    const Value value = GetValue(inOption);
    std::string text = "[" + Replaced(Replaced(inOption.mBrief, '[', "\\["), ']', "\\]") + "]";
    if (value != Value::km_None)
        text += ":" + std::string(inOption.mArgument) + ":";
    if (value == Value::km_Anything)
        text += " ";
    else if (value == Value::km_File)
        text += "_files";
    else if (value == Value::km_Folder)
        text += "_files -/";
    else if (value == Value::km_Preference)
        text += "(" + GetSwitches(" ", {"=0", "=1"}) + ")";
    text = "'" + Replaced(text, '\'', "'\\''") + "'";
    const char* const shortEnd = value == Value::km_None ? "" : "+";
    const char* const longEnd = value == Value::km_None ? "" : "=";
    if (!inOption.mName)
        return std::string("-") + inOption.mShort + shortEnd + text;
    if (!inOption.mShort)
        return std::string("--") + inOption.mName + longEnd + text;
    return "'(" + Spellings(inOption, " ") + ")'{-" + inOption.mShort + shortEnd + ",--" + inOption.mName +
           longEnd + "}" + text;
}

std::string FishLine(const TermOption& inOption) {
    std::string line = "complete -c parvigif";
    if (inOption.mShort)
        line += std::string(" -s ") + inOption.mShort;
    if (inOption.mName)
        line += std::string(" -l ") + inOption.mName;
    switch (GetValue(inOption)) {
    case Value::km_None:
        break;
    case Value::km_Anything:
        line += " -x";
        break;
    case Value::km_File:
        line += " -r -F";
        break;
    case Value::km_Folder:
        line += " -x -a '(__fish_complete_directories)'";
        break;
    case Value::km_Preference:
        line += " -x -a '" + GetSwitches(" ", {"=0", "=1"}) + "'";
        break;
    }
    return line + " -d '" + Replaced(inOption.mBrief, '\'', "\\'") + "'\n";
}

} // namespace

std::string TermBashCompletion() {
    std::string all;
    for (const TermOption& option : TermGetOptions())
        all += (all.empty() ? "" : " ") + Spellings(option, " ");
    return R"(# Completes the command line of parvigif in bash.
_parvigif() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD-1]} ended= at
    # bash parts --name=value into three words
    if [[ $word == = ]]; then
        word= option+==
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD-2]}=
    fi
    for ((at = 1; at < COMP_CWORD; ++at)); do
        if [[ ${COMP_WORDS[at]} == -- ]]; then ended=1 option=; fi
    done
    case $option in
    )" + GetSwitches("|", {"="}) +
           R"()
        mapfile -t COMPREPLY < <(compgen -W '0 1' -- "$word")
        return ;;
    esac
    case ${option%=} in
)" +
           BashCase(Value::km_File, "        compopt -o filenames 2>/dev/null\n"
                                    "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n") +
           BashCase(Value::km_Folder, "        compopt -o filenames 2>/dev/null\n"
                                      "        mapfile -t COMPREPLY < <(compgen -d -- \"$word\")\n") +
           BashCase(Value::km_Preference, "        compopt -o nospace 2>/dev/null\n"
                                          "        mapfile -t COMPREPLY < <(compgen -W '" +
                                              GetSwitches(" ", {"="}) + "' -- \"$word\")\n") +
           BashCase(Value::km_Anything, "") + R"(    esac
    if [[ $word == -* && ! $ended ]]; then
        mapfile -t COMPREPLY < <(compgen -W ')" +
           all + R"(' -- "$word")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.[Gg][Ii][Ff]' -- "$word")
    fi
}
complete -F _parvigif parvigif
)";
}

std::string TermZshCompletion() {
    std::string text = "#compdef parvigif\n# Completes the command line of parvigif in zsh.\n"
                       "_arguments -s -S \\\n";
    for (const TermOption& option : TermGetOptions())
        text += "    " + ZshArgument(option) + " \\\n";
    return text + "    '*:GIF file or folder:_files -g \"*.[gG][iI][fF]\"'\n";
}

std::string TermFishCompletion() {
    std::string text = "# Completes the command line of parvigif in fish.\n";
    for (const TermOption& option : TermGetOptions())
        text += FishLine(option);
    return text;
}

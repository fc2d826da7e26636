#pragma once

#include <string>
#include <string_view>

#include "term/text/exitstatus.h"

/** Text safe to show: control characters, which a file name may hold to play with the terminal, become
 *  escapes such as \n or \x1b; those that UTF-8 writes in two bytes, too. */
std::string TermPrintable(std::string_view inText);

/** Everything the program says to the person, one whole line each, on standard error with the program's name
 *  in front. Results do not pass here. */
class TermMessages {
public:
    /** Says it, and makes the exit status at least inExit, so that the two cannot disagree. */
    void Error(const std::string& inText, TermExit inExit = TermExit::km_Failure);

    /** The same about one file or name: "parvigif: <name>: <text>". */
    void FileError(const std::string& inName, const std::string& inText);

    /** Something went wrong, but no file suffered: the exit status stays. */
    void Warning(const std::string& inText);

    /** Worth knowing, and nothing went wrong. Silent when inQuiet was set. */
    void Note(const std::string& inText);
    void FileNote(const std::string& inName, const std::string& inText);
    void SetQuiet(bool inQuiet) { mQuiet = inQuiet; }

    TermExit GetExit() const { return mExit; }

private:
    TermExit mExit = TermExit::km_Success;
    bool mQuiet = false;
};

#pragma once

#include <string>
#include <string_view>

#include "term/text/exitstatus.h"

/** Text that is safe to show: control characters, with which a file name could manipulate the terminal,
 * become escapes such as \n or \x1b, also those that take two bytes in UTF-8; so do marks
 * that turn the direction of writing. */
std::string TermPrintable(std::string_view inText);

/** Errors, warnings and notes, one whole line each, on standard error after the program's name. Results do
 * not go this way. */
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

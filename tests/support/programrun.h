#pragma once

#include "tests/support/test.h"

#include <sys/types.h>

/** What a finished run of the program left on its streams. */
struct ProgramResult {
    int mStatus = 0; ///< exit status, or minus the signal that ended it
    std::string mOut;
    std::string mErr;
};

/** Runs the real program `parvigif` in a folder, with log and scratch files kept in another, and preferences
 *  that nobody else uses. */
class ProgramRunner {
public:
    /** The program's current folder is inFolder. */
    explicit ProgramRunner(std::string inFolder);

    /** On Windows, too, paths in the result have slashes. */
    ProgramResult Run(const std::vector<std::string>& inArguments);

    std::string mInput;     // the file that is its standard input; empty: nothing in particular
    std::string mOutput;    // the file that is its standard output; empty: it goes into the result
    bool mAsNobody = false; // without the rights of the superuser, whoever runs the tests; on POSIX only

    /** Where XDG_CONFIG_HOME (as "user"), XDG_STATE_HOME or the folder of application data ("state"), and
     *  TMPDIR or TMP ("tmp") lie. */
    const TestFolder& GetOwnFolder() const { return mOwnFolder; }

    // What follows is there on POSIX only.

    /** Starts it with a descriptor as its standard output; its errors are collected by Finish. */
    pid_t Start(const std::vector<std::string>& inArguments, int inOutput);
    ProgramResult Finish(pid_t inProcess);

    /** Called in the new process just before the program takes over; returns whether it may. */
    std::function<bool()> mBeforeStart;

private:
    [[noreturn]] void Become(const std::vector<std::string>& inArguments, int inOutput) const;

    std::string mFolder;
    TestFolder mOwnFolder;
};

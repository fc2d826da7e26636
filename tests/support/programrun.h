#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/support/testfolder.h"

/** What a finished run of the program left on its streams. */
struct ProgramResult {
    int mStatus = 0; ///< exit status, or minus the signal that ended it
    std::string mOut;
    std::string mErr;
};

/** Runs the real program `parvigif` in a folder, with log and scratch files kept in another, and preferences
 * that nobody else uses. */
class ProgramRunner {
public:
    /** The program's current folder is inFolder. */
    explicit ProgramRunner(std::string inFolder);

    ProgramResult Run(const std::vector<std::string>& inArguments);

    // What follows is there on POSIX only.

    /** Starts it with a descriptor as its standard output; its errors are collected by Finish. */
    pid_t Start(const std::vector<std::string>& inArguments, int inOutput);
    ProgramResult Finish(pid_t inProcess);

    /** Where XDG_CONFIG_HOME (as "user"), XDG_STATE_HOME ("state") and TMPDIR ("tmp") lie. */
    const TestFolder& GetOwnFolder() const { return mOwnFolder; }

    /** Called in the new process just before the program takes over; returns whether it may. */
    std::function<bool()> mBeforeStart;

private:
    [[noreturn]] void Become(const std::vector<std::string>& inArguments, int inOutput) const;

    std::string mFolder;
    TestFolder mOwnFolder;
};

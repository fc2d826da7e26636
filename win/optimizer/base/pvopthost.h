#pragma once

/** What the optimizer asks of the program around it. */
class PvOptHost {
public:
    virtual ~PvOptHost() = default;

    /** Called at most once per file, immediately before the original is first replaced.
     *  An NvErrorCode raised here leaves the original untouched. */
    virtual void BackupFile(const char* inPath) = 0;

    /** Called each time the file is about to be replaced, when its original is kept.
     *  @param inNewPath  what will take its place. An NvErrorCode raised here leaves the file as it is. */
    virtual void WillReplace(const char* /*inPath*/, const char* /*inNewPath*/) {}

    /** Called between frames and steps with how far this file is, from 0.0 to 1.0.
     *  @return whether to stop; the file then stays as it was, and code 3 is raised */
    virtual bool ReportProgress(double inFraction) = 0;
};

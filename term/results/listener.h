#pragma once

#include <string>

#include "win/batch/mizershell.h"

/** Hears what becomes of each file of a run: the results on standard output, a report. */
class TermListener {
public:
    virtual ~TermListener() = default;

    /** Called just before a file is first replaced, or would be: it still holds its original bytes. */
    virtual void BeforeReplace(const char* /*inPath*/) {}
    /** Called when a smaller file is complete; it may be gone after the call. */
    virtual void ResultMade(const char* /*inResultPath*/) {}

    /** Called once for each file, and for each name that leads to none (km_Failed, without sizes).
     *  @param inWords  what there is to tell beyond the numbers, see TermOutcomeWords */
    virtual void FileDone(const MizerFileResult& inResult, const std::string& inWords) = 0;
};

/** Why a file failed, was passed over, or stayed although a smaller one was found; empty when the status says
 *  it all. Safe to show. */
std::string TermOutcomeWords(const MizerFileResult& inResult);

#pragma once

#include <map>
#include <memory>
#include <string>

#include "term/options/options.h"
#include "term/report/report.h"
#include "term/results/results.h"
#include "term/text/messages.h"

/** Everything that a run leaves besides the pictures: its results, and the report if one is wanted. */
class TermOutcomes : public MizerListener {
public:
    explicit TermOutcomes(const TermSettings& inSettings) : mSettings(inSettings), mResults(inSettings) {}

    /** Begins the report. @return false when it cannot be written, which has been reported: no file may be
     *  touched then */
    bool Begin(TermMessages& ioMessages);

    /** Uses another name for one file in everything that is reported about it. */
    void SetShownName(const std::string& inPath, const std::string& inName) { mShownNames[inPath] = inName; }
    std::string GetShownName(const std::string& inPath) const;
    MizerFileResult GetShown(const MizerFileResult& inResult) const;

    void BeforeReplace(const char* inPath) override;
    void ResultMade(const char* inPath, const char* inResultPath) override;
    void FileDone(const MizerFileResult& inResult) override;

    /** Completes the report, then the results; ends the program when their reader has gone away. */
    void Finish(bool inIsCancelled, TermMessages& ioMessages);

    /** Whether the reader of the results has gone away. */
    bool IsPipeClosed() const { return mResults.IsPipeClosed(); }

private:
    void FinishReport(bool inIsCancelled, TermMessages& ioMessages);

    const TermSettings& mSettings;
    std::map<std::string, std::string> mShownNames;
    TermResults mResults;
    std::unique_ptr<TermReport> mReport; // null when none is wanted
};

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "term/inputs/names.h"

/** How far a batch is, measured in bytes of its files, and when it may be through. */
class TermProgress {
public:
    using Clock = std::chrono::steady_clock;

    /** Looks how large the files are, those that are named like GIFs. The time starts now. */
    explicit TermProgress(const TermInputs& inInputs);

    void StartFile(const std::string& inPath);
    void SetFileFraction(double inFraction) { mFileFraction = inFraction; }

    /** @param inWasStarted  else it was passed over, which says nothing about the time that others take */
    void EndFile(const std::string& inPath, bool inWasStarted);

    /** A time that nothing was done in. */
    void LeaveOut(Clock::duration inPause) { mStarted += inPause; }

    Clock::duration GetElapsed() const { return Clock::now() - mStarted; }
    double GetFileFraction() const { return mFileFraction; }
    double GetBatchFraction() const;

    /** "3 of 10"; empty when there is only one file. */
    std::string GetPosition() const;

    /** "about 20 s left"; empty as long as nobody could tell. */
    std::string GetTimeLeft() const;

private:
    std::map<std::string, std::uint64_t> mSizes; // bytes, of the files to come
    std::size_t mFiles = 0;
    std::uint64_t mAllBytes = 0;
    std::size_t mFilesDone = 0;
    std::uint64_t mBytesDone = 0;
    std::uint64_t mFileBytes = 0;
    double mFileFraction = 0.0;
    Clock::time_point mStarted = Clock::now();
};

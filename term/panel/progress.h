#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "term/inputs/names.h"

/** The progress of a batch, measured in bytes of its files, and an estimate of the time left. */
class TermProgress {
public:
    using Clock = std::chrono::steady_clock;

    /** Measures the files that are named like GIFs. The time starts now. */
    explicit TermProgress(const TermInputs& inInputs);

    void StartFile(const std::string& inPath);
    void SetFileFraction(double inFraction) { mFileFraction = inFraction; }

    /** What is done of other files that end later. */
    void SetBytesOfOthers(std::uint64_t inBytes) { mBytesOfOthers = inBytes; }

    /** @param inWasStarted  false when it was skipped, which says nothing about how long others take */
    void EndFile(const std::string& inPath, bool inWasStarted);

    /** A time in which nothing was done. */
    void LeaveOut(Clock::duration inPause) { mStarted += inPause; }

    Clock::duration GetElapsed() const { return Clock::now() - mStarted; }
    double GetFileFraction() const { return mFileFraction; }
    double GetBatchFraction() const;

    /** "3 of 10"; empty when there is only one file. */
    std::string GetPosition() const;

    /** "about 20 s left"; empty while there is nothing to go by. */
    std::string GetTimeLeft() const;

private:
    std::map<std::string, std::uint64_t> mSizes; // bytes, of the files to come
    std::size_t mFiles = 0;
    std::uint64_t mAllBytes = 0;
    std::size_t mFilesDone = 0;
    std::uint64_t mBytesDone = 0;
    std::uint64_t mFileBytes = 0;
    std::uint64_t mBytesOfOthers = 0;
    double mFileFraction = 0.0;
    Clock::time_point mStarted = Clock::now();
};

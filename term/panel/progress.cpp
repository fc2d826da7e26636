#include "term/panel/progress.h"

#include <algorithm>
#include <cmath>

#include "win/batch/filequeue.h"
#include "wnatom/wnsystem.h"

TermProgress::TermProgress(const TermInputs& inInputs) {
    for (const TermInput& input : inInputs.mFiles) {
        if (!MizerIsNamedGIF(input.mPath.c_str()))
            continue;
        const auto state = WnGetFileState(input.mPath.c_str());
        const std::uint64_t size = state ? state->mSize : 0;
        mSizes[input.mPath] = size;
        mAllBytes += size;
    }
    mFiles = mSizes.size();
}

void TermProgress::StartFile(const std::string& inPath) {
    const auto size = mSizes.find(inPath);
    mFileBytes = size == mSizes.end() ? 0 : size->second;
    mFileFraction = 0.0;
}

void TermProgress::EndFile(const std::string& inPath, bool inWasStarted) {
    const auto size = mSizes.find(inPath);
    if (size == mSizes.end())
        return;
    if (inWasStarted)
        mBytesDone += size->second;
    else
        mAllBytes -= size->second;
    mSizes.erase(size);
    ++mFilesDone;
    mFileBytes = 0;
    mFileFraction = 0.0;
}

double TermProgress::GetBatchFraction() const {
    if (mAllBytes == 0)
        return 0.0;
    const double done =
        static_cast<double>(mBytesDone + mBytesOfOthers) + static_cast<double>(mFileBytes) * mFileFraction;
    return std::min(1.0, done / static_cast<double>(mAllBytes));
}

std::string TermProgress::GetPosition() const {
    return mFiles < 2 ? ""
                      : std::to_string(std::min(mFilesDone + 1, mFiles)) + " of " + std::to_string(mFiles);
}

std::string TermProgress::GetTimeLeft() const {
    const double elapsed = std::chrono::duration<double>(GetElapsed()).count();
    const double fraction = GetBatchFraction();
    if (elapsed < 2.0 || fraction < 0.01)
        return {};
    const double seconds = elapsed * (1.0 - fraction) / fraction;
    if (seconds < 60.0)
        return "about " + std::to_string(static_cast<int>(std::ceil(seconds))) + " s left";
    const auto minutes = static_cast<std::uint64_t>(std::ceil(std::min(seconds, 1e9) / 60.0));
    if (minutes < 60)
        return "about " + std::to_string(minutes) + " min left";
    return "about " + std::to_string(minutes / 60) + " h " + std::to_string(minutes % 60) + " min left";
}

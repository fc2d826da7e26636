#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** In which order the files of a batch are handed out: as they were named, so that their results can be shown
 *  as they come, but one so large that its worker would be the last to end, while others have nothing left to
 *  do, goes first. */
class CrewOrder {
public:
    /** @param inSizes  of the files as they were named, in bytes */
    CrewOrder(std::vector<std::uint64_t> inSizes, std::size_t inWorkers);

    bool IsEmpty() const { return mLeft == 0; }

    /** The next file to hand out. There is one. */
    std::size_t TakeNext();

private:
    std::vector<std::uint64_t> mSizes;
    std::vector<std::size_t> mBySize; // largest first
    std::vector<bool> mIsTaken;
    std::size_t mWorkers;
    std::size_t mFirst = 0, mLargest = 0; // where the search for one that is left begins in either order
    std::size_t mLeft;
    std::uint64_t mBytesLeft;
};

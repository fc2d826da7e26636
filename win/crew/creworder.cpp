#include "win/crew/creworder.h"

#include <algorithm>
#include <numeric>
#include <utility>

CrewOrder::CrewOrder(std::vector<std::uint64_t> inSizes, std::size_t inWorkers)
    : mSizes(std::move(inSizes)),
      mBySize(mSizes.size()),
      mIsTaken(mSizes.size()),
      mWorkers(inWorkers),
      mLeft(mSizes.size()),
      mBytesLeft(std::accumulate(mSizes.begin(), mSizes.end(), std::uint64_t{0})) {
    std::iota(mBySize.begin(), mBySize.end(), 0U);
    std::stable_sort(mBySize.begin(), mBySize.end(),
                     [&](std::size_t inA, std::size_t inB) { return mSizes[inA] > mSizes[inB]; });
}

std::size_t CrewOrder::TakeNext() {
    while (mIsTaken[mFirst])
        ++mFirst;
    while (mIsTaken[mBySize[mLargest]])
        ++mLargest;
    const std::size_t largest = mBySize[mLargest];
    const bool wouldBeLast = mSizes[largest] > mBytesLeft / mWorkers;
    const std::size_t next = wouldBeLast ? largest : mFirst;
    mIsTaken[next] = true;
    --mLeft;
    mBytesLeft -= mSizes[next];
    return next;
}

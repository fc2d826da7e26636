#include "win/optimizer/codes/pvswapsearch.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/gif/nvinterlace.h"

void PvSwapSearch::Begin(std::uint8_t* ioPixels, std::uint32_t inWidth, std::uint32_t inHeight,
                         std::uint32_t inColorCount, bool inInterlaced) {
    mPixelBits = std::max<std::uint32_t>(NvGIFMinimumCodeSize(inColorCount), 2);
    mParser.Begin(mPixelBits);
    mAhead.Begin(mPixelBits);
    mSegments.clear();

    mFrame = ioPixels;
    mWidth = inWidth;
    mLength = inWidth * inHeight;
    mRowStart.resize(inHeight);
    mInterlaced.clear();
    std::uint32_t start = 0;
    NvForEachRowInFileOrder(inHeight, inInterlaced, [&](std::uint32_t y) {
        mRowStart[y] = start;
        start += inWidth;
        const std::uint8_t* row = ioPixels + std::size_t{y} * inWidth;
        if (inInterlaced)
            mInterlaced.insert(mInterlaced.end(), row, row + inWidth);
    });
    mStream = inInterlaced ? mInterlaced.data() : mFrame;

    mMisses = mMissesAtBegin = CountMisses(0, 0, UINT64_MAX);
    mSegmentStart = 0;
    mMissesBefore = 0;
    mNext = km_Nowhere;
}

bool PvSwapSearch::ExchangeIfShorter(std::uint32_t inX, std::uint32_t inY) {
    const std::uint32_t pair = mRowStart[inY] + inX;
    FindSegment(pair);
    const std::uint32_t presentEnd = SegmentFrom(mSegmentStart).mEnd;
    std::swap(mStream[pair], mStream[pair + 1]);
    if (!KeepIfFewer(pair, presentEnd)) {
        std::swap(mStream[pair], mStream[pair + 1]);
        return false;
    }
    if (mStream != mFrame) {
        std::uint8_t* pixel = mFrame + std::size_t{inY} * mWidth + inX;
        std::swap(pixel[0], pixel[1]);
    }
    return true;
}

// Rows of an interlaced frame are visited in another order than the stream's: a pair may lie before the last.
void PvSwapSearch::FindSegment(std::uint32_t inPosition) {
    std::uint32_t start = mSegmentStart;
    if (start >= inPosition) {
        start = 0;
        mMissesBefore = 0;
    }
    for (PvSegment segment = SegmentFrom(start); segment.mEnd < inPosition; segment = SegmentFrom(start)) {
        mMissesBefore += segment.mMisses;
        start = segment.mEnd;
    }
    if (start == mSegmentStart)
        return;
    mSegmentStart = start;
    mNext = km_Nowhere;
}

// The pair has changed places already.
PvSegment PvSwapSearch::Try(std::uint32_t inPair) {
    MoveTo(inPair);
    const PvLZWParser::State before = mParser.GetState();
    const std::uint64_t toBeat = mMisses - mMissesBefore;
    const auto limit = static_cast<std::uint32_t>(std::min<std::uint64_t>(mParser.GetCapacity(), toBeat));
    std::uint32_t end = mNext;
    const bool hasReset = mParser.Read(mStream, mLength, end, limit);
    mPixelSteps += end - mNext;
    const PvSegment trial{hasReset ? end : mLength, mParser.GetState().mMisses};
    mParser.Restore(before);
    return trial;
}

void PvSwapSearch::MoveTo(std::uint32_t inPosition) {
    if (mNext > inPosition) {
        mParser.Start(mStream[mSegmentStart]);
        mNext = mSegmentStart + 1;
    }
    mPixelSteps += inPosition - mNext;
    mParser.Read(mStream, inPosition, mNext);
}

// The pair has changed places already.
bool PvSwapSearch::KeepIfFewer(std::uint32_t inPair, std::uint32_t inPresentEnd) {
    const PvSegment trial = Try(inPair);
    // From a reset where the present stream has one too, both go on alike.
    if (trial.mEnd < mLength && trial.mEnd == inPresentEnd && trial.mEnd > inPair + 1)
        return false;
    const std::uint64_t toBeat = mMisses - mMissesBefore;
    std::uint64_t misses = trial.mMisses;
    if (misses < toBeat)
        misses += CountMisses(trial.mEnd, inPair + 2, toBeat - misses);
    if (misses >= toBeat)
        return false;
    mMisses = mMissesBefore + misses;
    ForgetSegmentsOver(inPair);
    mSegments[mSegmentStart] = trial;
    return true;
}

/** Misses from a reset position to the end of the stream, or any number from inToBeat on.
 *  @param inUnchanged  segments from here on are those of the present stream */
std::uint64_t PvSwapSearch::CountMisses(std::uint32_t inReset, std::uint32_t inUnchanged,
                                        std::uint64_t inToBeat) {
    std::uint64_t misses = 0;
    while (inReset < mLength && misses < inToBeat) {
        const PvSegment segment = inReset < inUnchanged ? ParseSegment(inReset) : SegmentFrom(inReset);
        misses += segment.mMisses;
        inReset = segment.mEnd;
    }
    return misses;
}

const PvSegment& PvSwapSearch::SegmentFrom(std::uint32_t inReset) {
    const auto known = mSegments.find(inReset);
    return known != mSegments.end() ? known->second
                                    : mSegments.emplace(inReset, ParseSegment(inReset)).first->second;
}

PvSegment PvSwapSearch::ParseSegment(std::uint32_t inReset) {
    mAhead.Start(mStream[inReset]);
    std::uint32_t next = inReset + 1;
    const bool hasReset = mAhead.Read(mStream, mLength, next);
    mPixelSteps += next - inReset;
    return {hasReset ? next : mLength, mAhead.GetState().mMisses};
}

void PvSwapSearch::ForgetSegmentsOver(std::uint32_t inPair) {
    const auto end = mSegments.upper_bound(inPair + 1);
    for (auto segment = mSegments.begin(); segment != end;)
        segment = segment->second.mEnd >= inPair ? mSegments.erase(segment) : std::next(segment);
}

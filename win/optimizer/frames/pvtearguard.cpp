#include "win/optimizer/frames/pvtearguard.h"

#include <algorithm>

#include "nvcode2/image/nvcolortable.h"

namespace {

constexpr std::uint32_t km_BlockSize = 4; // pixels

// How much of a window's contrast the errors in it may come to. At 0.3 film takes a tenth more bytes than at
// 0.4 and looks hardly better; at 0.5 outlines are seen again.
constexpr double km_TolerableError = 0.4;

// Contrast that every window has: faint noise hides errors, too. The usual (0.03 * 255)^2.
constexpr double km_LeastContrast = 58.5225;

/** The sum of the squared differences of the channels of two colours. */
std::uint32_t SquaredError(std::uint32_t inFirst, std::uint32_t inSecond) {
    const auto square = [&](std::uint32_t inShift) {
        const auto difference = static_cast<std::int32_t>((inFirst >> inShift) & 0xFF) -
                                static_cast<std::int32_t>((inSecond >> inShift) & 0xFF);
        return static_cast<std::uint32_t>(difference * difference);
    };
    return square(0) + square(8) + square(16);
}

double Variance(std::uint32_t inSum, std::uint32_t inSquares, double inCount) {
    const double mean = inSum / inCount;
    return inSquares / inCount - mean * mean;
}

} // namespace

void PvTearGuard::Columns::Add(const Columns& inOther) {
    mFirst = std::min(mFirst, inOther.mFirst);
    mEnd = std::max(mEnd, inOther.mEnd);
}

template <typename Work>
void PvTearGuard::ForEachBlockOf(std::uint32_t inColumn, std::uint32_t inRow, Work inWork) const {
    const std::uint32_t right = std::min(inColumn + 1, mBlockColumns - 1);
    const std::size_t above = std::size_t{inRow} * mBlockColumns;
    const std::size_t below = std::size_t{std::min(inRow + 1, mBlockRows - 1)} * mBlockColumns;
    for (const std::size_t block : {above + inColumn, above + right, below + inColumn, below + right})
        inWork(block);
}

void PvTearGuard::VisitTears(const PvLaidFrame& inFrame, const Visitor& inVisit) {
    mBlockColumns = (inFrame.mWidth + km_BlockSize - 1) / km_BlockSize;
    mBlockRows = (inFrame.mHeight + km_BlockSize - 1) / km_BlockSize;
    CollectStates(inFrame);
    Columns above; // mixed windows of the row before
    bool anyMixed = false;
    for (std::uint32_t row = 0; row < mBlockRows; ++row) {
        const Columns windows = FindMixedWindows(row);
        Columns blocks = above;
        blocks.Add(windows);
        if (!blocks.IsEmpty()) {
            if (!anyMixed) {
                mBlocks.resize(mStates.size());
                mTorn.assign(mStates.size(), 0);
                anyMixed = true;
            }
            SumBlocks(inFrame, row, {blocks.mFirst, std::min(blocks.mEnd + 1, mBlockColumns)});
        }
        if (row > 0)
            JudgeWindows(row - 1, above);
        above = windows;
    }
    if (!anyMixed)
        return;
    JudgeWindows(mBlockRows - 1, above);
    VisitBlocks(inFrame, inVisit);
}

void PvTearGuard::CollectStates(const PvLaidFrame& inFrame) {
    mStates.assign(std::size_t{mBlockColumns} * mBlockRows, 0);
    for (std::uint32_t y = 0; y < inFrame.mHeight; ++y) {
        const std::uint8_t* states = inFrame.mStates(y);
        std::uint8_t* joined = mStates.data() + std::size_t{y / km_BlockSize} * mBlockColumns;
        const std::uint32_t wholeBlocks = inFrame.mWidth / km_BlockSize;
        for (std::uint32_t i = 0; i < wholeBlocks; ++i)
            joined[i] = static_cast<std::uint8_t>(joined[i] | states[4 * i] | states[4 * i + 1] |
                                                  states[4 * i + 2] | states[4 * i + 3]);
        for (std::uint32_t x = wholeBlocks * km_BlockSize; x < inFrame.mWidth; ++x)
            joined[wholeBlocks] |= states[x];
    }
}

/** The windows of a row, from the first to the last, that hold pixels of both kinds. */
PvTearGuard::Columns PvTearGuard::FindMixedWindows(std::uint32_t inRow) const {
    Columns mixed;
    for (std::uint32_t column = 0; column < mBlockColumns; ++column) {
        std::uint8_t states = 0;
        ForEachBlockOf(column, inRow, [&](std::size_t inBlock) { states |= mStates[inBlock]; });
        if (states == (km_Drawn | km_MadeTransparent))
            mixed.Add({column, column + 1});
    }
    return mixed;
}

void PvTearGuard::SumBlocks(const PvLaidFrame& inFrame, std::uint32_t inRow, const Columns& inColumns) {
    const Columns pixels{inColumns.mFirst * km_BlockSize,
                         std::min(inColumns.mEnd * km_BlockSize, inFrame.mWidth)};
    const std::uint32_t top = inRow * km_BlockSize;
    const std::uint32_t bottom = std::min(top + km_BlockSize, inFrame.mHeight);
    const std::size_t width = std::size_t{inColumns.mEnd - inColumns.mFirst} * km_BlockSize;
    mSums.assign(5 * width, 0);
    for (std::uint32_t y = top; y < bottom; ++y)
        AddPixels(inFrame, y, pixels);
    for (std::uint32_t column = inColumns.mFirst; column < inColumns.mEnd; ++column) {
        const std::uint32_t* sums = mSums.data() + std::size_t{column - inColumns.mFirst} * km_BlockSize;
        const auto across = [&](std::size_t inField) {
            const std::uint32_t* field = sums + inField * width;
            return field[0] + field[1] + field[2] + field[3];
        };
        const std::uint32_t left = column * km_BlockSize;
        mBlocks[std::size_t{inRow} * mBlockColumns + column] = {
            across(0), across(1), across(2),
            across(3), across(4), (std::min(left + km_BlockSize, inFrame.mWidth) - left) * (bottom - top)};
    }
}

// In steps over all columns, of which compilers make vector code.
void PvTearGuard::AddPixels(const PvLaidFrame& inFrame, std::uint32_t inY, const Columns& inPixels) {
    const std::uint32_t count = inPixels.mEnd - inPixels.mFirst;
    const std::uint8_t* indices = inFrame.mIndices(inY) + inPixels.mFirst;
    const std::uint8_t* states = inFrame.mStates(inY) + inPixels.mFirst;
    const std::uint32_t* shown = inFrame.mShown(inY) + inPixels.mFirst;
    mWanted.resize(count);
    for (std::uint32_t x = 0; x < count; ++x)
        mWanted[x] = states[x] == km_MadeTransparent ? inFrame.mColours[indices[x]] : shown[x];

    const std::size_t width = mSums.size() / 5;
    const std::uint32_t* wanted = mWanted.data();
    const auto addLuma = [&](const std::uint32_t* inColours, std::uint32_t* ioSums) {
        for (std::uint32_t x = 0; x < count; ++x) {
            const std::uint32_t luma = NvLumaOf(inColours[x]);
            ioSums[x] += luma;
            ioSums[x + width] += luma * luma;
        }
    };
    addLuma(wanted, mSums.data());
    addLuma(shown, mSums.data() + 2 * width);
    std::uint32_t* errors = mSums.data() + 4 * width;
    for (std::uint32_t x = 0; x < count; ++x)
        errors[x] += SquaredError(wanted[x], shown[x]);
}

void PvTearGuard::JudgeWindows(std::uint32_t inRow, const Columns& inColumns) {
    for (std::uint32_t column = inColumns.mFirst; column < inColumns.mEnd; ++column) {
        Block window;
        std::uint8_t states = 0;
        ForEachBlockOf(column, inRow, [&](std::size_t inBlock) {
            const Block& block = mBlocks[inBlock];
            window.mWanted += block.mWanted;
            window.mWantedSquares += block.mWantedSquares;
            window.mShown += block.mShown;
            window.mShownSquares += block.mShownSquares;
            window.mErrors += block.mErrors;
            window.mPixels += block.mPixels;
            states |= mStates[inBlock];
        });
        if (window.mErrors == 0 || states != (km_Drawn | km_MadeTransparent))
            continue;
        const double count = window.mPixels;
        const double contrast = Variance(window.mWanted, window.mWantedSquares, count) +
                                Variance(window.mShown, window.mShownSquares, count) + km_LeastContrast;
        if (window.mErrors / (3.0 * count) > km_TolerableError * contrast)
            ForEachBlockOf(column, inRow, [&](std::size_t inBlock) { Mend(inBlock); });
    }
}

/** A block of a torn window shows what it ought to from now on, to the windows that overlap, too. */
void PvTearGuard::Mend(std::size_t inBlock) {
    Block& block = mBlocks[inBlock];
    block.mShown = block.mWanted;
    block.mShownSquares = block.mWantedSquares;
    block.mErrors = 0;
    mTorn[inBlock] = 1;
}

void PvTearGuard::VisitBlocks(const PvLaidFrame& inFrame, const Visitor& inVisit) const {
    for (std::uint32_t y = 0; y < inFrame.mHeight; ++y) {
        const std::uint8_t* torn = mTorn.data() + std::size_t{y / km_BlockSize} * mBlockColumns;
        for (std::uint32_t column = 0; column < mBlockColumns; ++column)
            if (torn[column] != 0)
                inVisit(y, column * km_BlockSize, std::min((column + 1) * km_BlockSize, inFrame.mWidth));
    }
}

#pragma once

#include "tests/support/test.h"

/** A GIF as a test means it, independent of the library: what is in the file, how it is written, and what a
 *  viewer shows. Colours are 0xRRGGBB. */

using TestTable = std::vector<std::uint32_t>;

struct TestFrame {
    std::uint32_t mLeft = 0;
    std::uint32_t mTop = 0;
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    std::vector<std::uint8_t> mPixels; // indices, row-major
    TestTable mLocalTable;             // empty: the frame uses the global one
    int mTransparent = -1;             // index that is not drawn, also one that no table has; -1: none
    std::uint32_t mDisposal = 0;
    std::uint32_t mDelay = 0;
    bool mUserInput = false;
    bool mInterlaced = false;
    std::optional<std::size_t> mDelivered; // pixels after which the end code stands; nothing: all of them
    bool mIsDamaged = false;               // beyond that: the data run over or hold undefined codes

    bool operator==(const TestFrame&) const = default;
};

struct TestGIF {
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    TestTable mTable; // empty: no global table
    std::uint8_t mBackground = 0;
    std::uint8_t mAspect = 0;
    std::optional<std::uint32_t> mLoop; // count; nothing: no looping block
    std::vector<std::string> mComments;
    std::vector<TestFrame> mFrames;

    const TestTable& TableOf(const TestFrame& inFrame) const {
        return inFrame.mLocalTable.empty() ? mTable : inFrame.mLocalTable;
    }
};

/** A frame from text: rows of equal length parted by blanks, one character per pixel. '0' to '9' and 'a' to
 *  'e' are indices 0 to 14, '.' is an undrawn pixel of index 15. */
TestFrame Picture(const std::string& inRows, std::uint32_t inLeft = 0, std::uint32_t inTop = 0);

TestFrame WithDisposal(TestFrame inFrame, std::uint32_t inDisposal);

/** A frame whose pixels are inIndex(x, y). */
template <typename Index>
TestFrame Paint(std::uint32_t inWidth, std::uint32_t inHeight, Index inIndex) {
    TestFrame frame;
    frame.mWidth = inWidth;
    frame.mHeight = inHeight;
    for (std::uint32_t y = 0; y < inHeight; ++y)
        for (std::uint32_t x = 0; x < inWidth; ++x)
            frame.mPixels.push_back(static_cast<std::uint8_t>(inIndex(x, y)));
    return frame;
}

/** A file of frames on a screen that just holds them, over sixteen colours that nobody takes for each other.
 */
TestGIF Movie(std::vector<TestFrame> inFrames);

/** inSize greys from black to white. */
TestTable Greys(std::uint32_t inSize);

/** Up to 32 colours from blue to brown that differ in all but their luma. */
TestTable EquallyBright(std::uint32_t inSize);

/** A frame's rows in the order in which a file holds them. */
std::vector<std::uint32_t> FileOrder(std::uint32_t inHeight, bool inInterlaced);

/** The bytes of the file, compressed as a plain encoder does it. */
std::string EncodeGIF(const TestGIF& inGIF);

/** Reads a file with giflib. Fails the test when giflib finds fault with it. On Windows, which has no giflib,
 *  the plain reader reads it. */
TestGIF ReadGIF(const std::string& inPath);
std::optional<TestGIF> TryReadGIF(const std::string& inPath);

/** Reads a file plainly, with nothing of the library: what browsers would show of it, as far as it can be
 *  read, up to the first undefined code of each frame. Nothing when a block is cut or unknown, or what it
 *  says makes no sense. */
std::optional<TestGIF> PlainReadGIF(const std::string& inBytes);

/** What a viewer shows after each frame: a screen of colours, row-major, km_Uncovered where nothing is. */
using TestCanvas = std::vector<std::int32_t>;
inline constexpr std::int32_t km_Uncovered = -1;
std::vector<TestCanvas> Play(const TestGIF& inGIF);

/** Two files beside each other. */
struct TestComparison {
    std::string mDifference;    // what a viewer would notice besides colours; empty: nothing
    double mWorstMean = 0.0;    // largest mean error of a displayed frame, levels per channel
    int mWorstChannel = 0;      // largest difference of one channel of one displayed pixel
    std::size_t mDiffering = 0; // displayed pixels whose colour differs, in all frames
};
TestComparison CompareGIFs(const TestGIF& inOriginal, const TestGIF& inResult);

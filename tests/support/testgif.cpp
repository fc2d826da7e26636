#include "tests/support/testgif.h"

#include "tests/support/gifbytes.h"
#include "tests/support/lzwreference.h"

namespace {

std::uint32_t BitsFor(std::size_t inCount) {
    std::uint32_t bits = 1;
    while (std::size_t{1} << bits < inCount)
        ++bits;
    return bits;
}

std::string TableBytes(const TestTable& inTable) {
    std::string bytes;
    for (std::size_t i = 0; i < std::size_t{1} << BitsFor(inTable.size()); ++i)
        for (const int shift : {16, 8, 0})
            bytes += static_cast<char>(i < inTable.size() ? inTable[i] >> shift & 0xFF : 0);
    return bytes;
}

std::string FrameBytes(const TestFrame& inFrame, const TestTable& inGlobalTable) {
    std::string bytes;
    const bool transparent = inFrame.mTransparent >= 0;
    if (transparent || inFrame.mDisposal || inFrame.mDelay || inFrame.mUserInput)
        bytes = GIFControl(inFrame.mDisposal << 2 | (inFrame.mUserInput ? 2U : 0U) | (transparent ? 1U : 0U),
                           inFrame.mDelay, static_cast<unsigned>(std::max(inFrame.mTransparent, 0)));
    const bool local = !inFrame.mLocalTable.empty();
    const TestTable& table = local ? inFrame.mLocalTable : inGlobalTable;
    bytes += GIFDescriptor(inFrame.mLeft, inFrame.mTop, inFrame.mWidth, inFrame.mHeight,
                           (local ? 0x80U | (BitsFor(table.size()) - 1) : 0U) |
                               (inFrame.mInterlaced ? 0x40U : 0U));
    if (local)
        bytes += TableBytes(table);

    Indices stored;
    for (const std::uint32_t y : FileOrder(inFrame.mHeight, inFrame.mInterlaced))
        stored.insert(stored.end(), inFrame.mPixels.begin() + y * inFrame.mWidth,
                      inFrame.mPixels.begin() + (y + 1) * inFrame.mWidth);
    stored.resize(std::min(stored.size(), inFrame.mDelivered.value_or(stored.size())));
    const std::uint32_t highest = stored.empty() ? 0 : *std::max_element(stored.begin(), stored.end());
    return bytes + ReferenceLZWEncode(std::max(BitsFor(table.size()), BitsFor(highest + 1)), stored);
}

} // namespace

std::vector<std::uint32_t> FileOrder(std::uint32_t inHeight, bool inInterlaced) {
    using Passes = std::vector<std::pair<std::uint32_t, std::uint32_t>>; // first row, step
    std::vector<std::uint32_t> rows;
    for (const auto& [start, step] : inInterlaced ? Passes{{0, 8}, {4, 8}, {2, 4}, {1, 2}} : Passes{{0, 1}})
        for (std::uint32_t y = start; y < inHeight; y += step)
            rows.push_back(y);
    return rows;
}

TestFrame Picture(const std::string& inRows, std::uint32_t inLeft, std::uint32_t inTop) {
    TestFrame frame;
    frame.mLeft = inLeft;
    frame.mTop = inTop;
    frame.mWidth = static_cast<std::uint32_t>(std::min(inRows.find(' '), inRows.size()));
    for (const char character : inRows) {
        if (character == ' ')
            continue;
        if (character == '.')
            frame.mTransparent = 15;
        frame.mPixels.push_back(static_cast<std::uint8_t>(character == '.'   ? 15
                                                          : character >= 'a' ? character - 'a' + 10
                                                                             : character - '0'));
    }
    frame.mHeight = static_cast<std::uint32_t>(frame.mPixels.size()) / frame.mWidth;
    return frame;
}

TestFrame WithDisposal(TestFrame inFrame, std::uint32_t inDisposal) {
    inFrame.mDisposal = inDisposal;
    return inFrame;
}

TestGIF Movie(std::vector<TestFrame> inFrames) {
    TestGIF gif;
    gif.mFrames = std::move(inFrames);
    for (const TestFrame& frame : gif.mFrames) {
        gif.mWidth = std::max(gif.mWidth, frame.mLeft + frame.mWidth);
        gif.mHeight = std::max(gif.mHeight, frame.mTop + frame.mHeight);
    }
    gif.mTable = {0x000000, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF,
                  0x808080, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0xFF8000};
    return gif;
}

TestTable Greys(std::uint32_t inSize) {
    TestTable table;
    for (std::uint32_t i = 0; i < inSize; ++i)
        table.push_back((inSize == 1 ? 0 : i * 255 / (inSize - 1)) * 0x010101);
    return table;
}

TestTable EquallyBright(std::uint32_t inSize) {
    TestTable table;
    for (std::uint32_t i = 0; i < inSize; ++i)
        table.push_back((64 + 3 * i) << 16 | 64 << 8 | (255 - 8 * i));
    return table;
}

std::string EncodeGIF(const TestGIF& inGIF) {
    const bool hasTable = !inGIF.mTable.empty();
    std::string bytes =
        GIFHeader(inGIF.mWidth, inGIF.mHeight, hasTable ? 0xF0U | (BitsFor(inGIF.mTable.size()) - 1) : 0U);
    bytes[11] = static_cast<char>(inGIF.mBackground);
    bytes[12] = static_cast<char>(inGIF.mAspect);
    if (hasTable)
        bytes += TableBytes(inGIF.mTable);
    if (inGIF.mLoop)
        bytes += GIFApplication({"NETSCAPE2.0", "\1" + GIFWord(*inGIF.mLoop)});
    for (const std::string& comment : inGIF.mComments) {
        std::vector<std::string> blocks;
        for (std::size_t at = 0; at < comment.size(); at += 255)
            blocks.push_back(comment.substr(at, 255));
        bytes += GIFComment(blocks);
    }
    for (const TestFrame& frame : inGIF.mFrames)
        bytes += FrameBytes(frame, inGIF.mTable);
    return bytes + ';';
}

std::vector<TestCanvas> Play(const TestGIF& inGIF) {
    std::vector<TestCanvas> shown;
    TestCanvas canvas(std::size_t{inGIF.mWidth} * inGIF.mHeight, km_Uncovered);
    for (const TestFrame& frame : inGIF.mFrames) {
        const TestCanvas before = canvas;
        const TestTable& table = inGIF.TableOf(frame);
        const auto paint = [&](std::uint32_t inX, std::uint32_t inY, std::int32_t inColor) {
            const std::uint32_t x = frame.mLeft + inX;
            const std::uint32_t y = frame.mTop + inY;
            if (x < inGIF.mWidth && y < inGIF.mHeight)
                canvas[y * inGIF.mWidth + x] = inColor;
        };
        std::size_t arrived = frame.mDelivered.value_or(frame.mPixels.size());
        for (const std::uint32_t y : FileOrder(frame.mHeight, frame.mInterlaced))
            for (std::uint32_t x = 0; x < frame.mWidth && arrived > 0; ++x, --arrived) {
                const std::uint8_t index = frame.mPixels[y * frame.mWidth + x];
                if (index != frame.mTransparent)
                    paint(x, y, index < table.size() ? static_cast<std::int32_t>(table[index]) : 0);
            }
        shown.push_back(canvas);
        if (frame.mDisposal == 3 || frame.mDisposal == 4)
            canvas = before;
        for (std::uint32_t y = 0; frame.mDisposal == 2 && y < frame.mHeight; ++y)
            for (std::uint32_t x = 0; x < frame.mWidth; ++x)
                paint(x, y, km_Uncovered);
    }
    return shown;
}

namespace {

std::string DifferenceBesidesPictures(const TestGIF& inOriginal, const TestGIF& inResult) {
    const auto isSame = [&](auto inMember) { return inOriginal.*inMember == inResult.*inMember; };
    if (!isSame(&TestGIF::mWidth) || !isSame(&TestGIF::mHeight) || !isSame(&TestGIF::mAspect))
        return "screen";
    if (inOriginal.mFrames.size() != inResult.mFrames.size())
        return "number of frames";
    if (!isSame(&TestGIF::mLoop) || !isSame(&TestGIF::mComments))
        return "looping or comments";
    for (std::size_t i = 0; i < inOriginal.mFrames.size(); ++i) {
        const TestFrame& original = inOriginal.mFrames[i];
        const TestFrame& result = inResult.mFrames[i];
        if (original.mDelay != result.mDelay || original.mUserInput != result.mUserInput ||
            original.mInterlaced != result.mInterlaced)
            return "delay, user input or interlacing of frame " + std::to_string(i);
    }
    return {};
}

} // namespace

TestComparison CompareGIFs(const TestGIF& inOriginal, const TestGIF& inResult) {
    TestComparison comparison;
    comparison.mDifference = DifferenceBesidesPictures(inOriginal, inResult);
    if (!comparison.mDifference.empty())
        return comparison;
    const std::vector<TestCanvas> original = Play(inOriginal);
    const std::vector<TestCanvas> result = Play(inResult);
    for (std::size_t i = 0; i < original.size(); ++i) {
        std::uint64_t error = 0;
        std::uint64_t covered = 0;
        for (std::size_t at = 0; at < original[i].size(); ++at) {
            const std::int32_t from = original[i][at];
            const std::int32_t to = result[i][at];
            if ((from == km_Uncovered) != (to == km_Uncovered)) {
                comparison.mDifference = "pixels covered in frame " + std::to_string(i);
                return comparison;
            }
            if (from == km_Uncovered)
                continue;
            ++covered;
            comparison.mDiffering += from != to ? 1 : 0;
            for (const int shift : {0, 8, 16}) {
                const int difference = std::abs((from >> shift & 0xFF) - (to >> shift & 0xFF));
                error += static_cast<std::uint64_t>(difference);
                comparison.mWorstChannel = std::max(comparison.mWorstChannel, difference);
            }
        }
        if (covered > 0)
            comparison.mWorstMean = std::max(comparison.mWorstMean, static_cast<double>(error) /
                                                                        (3.0 * static_cast<double>(covered)));
    }
    return comparison;
}

// The LZW codec against the plain reference: any bytes as a stream, and any pixels there and back.
//
// The first four bytes choose: bit 0 decode or encode, bit 1 interlaced, bits 2-4 the minimum code size when
// encoding, bits 5-7 all set for a frame large enough to fill the table; width; height; bytes between rows.

#include <algorithm>

#include "fuzz/fuzz.h"
#include "tests/support/lzwcodec.h"
#include "tests/support/testfolder.h"

namespace {

void CheckDecoding(LZWCodec& ioCodec, const std::string& inStream, const FrameShape& inShape) {
    const LZWDecoded expected = ReferenceLZWDecode(inStream, inShape.PixelCount());
    const LZWDecoded decoded = ioCodec.Decode(inStream, inShape);
    Require(decoded.mError == expected.mError, "same error as the reference");
    if (decoded.mError != 0)
        return;
    Require(decoded.mPixels == expected.mPixels, "same pixels as the reference");
    Require(decoded.mIsUndefined == expected.mIsUndefined && decoded.mRunsOver == expected.mRunsOver,
            "same damage as the reference");
}

void CheckEncoding(LZWCodec& ioCodec, std::uint8_t inMinimumCodeSize, const std::string& inSource,
                   const FrameShape& inShape) {
    // The source is repeated with changes, or no input of a sensible size would ever fill the table.
    Indices pixels(std::size_t{inShape.mStride} * inShape.mHeight);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto source = static_cast<unsigned char>(inSource[i % inSource.size()]);
        pixels[i] = static_cast<std::uint8_t>((source + i / inSource.size() * source / 16) &
                                              ((1U << inMinimumCodeSize) - 1));
    }
    const Indices ordered = InFileOrder(pixels, inShape);
    const std::string stream = ioCodec.Encode(inMinimumCodeSize, pixels, inShape);
    Require(stream == ReferenceLZWEncode(inMinimumCodeSize, ordered), "same stream as the reference");
    Require(ioCodec.Decode(stream, inShape).mPixels == ordered, "same pixels after encoding and decoding");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize) {
    static const TestFolder folder;
    static LZWCodec codec(folder / "stream");
    if (inSize < 5)
        return 0;
    const unsigned options = inData[0];
    const bool isLarge = options >= 0xE0;
    const std::uint32_t width = inData[1] % (isLarge ? 256U : 32U) + 1;
    const std::uint32_t height = inData[2] % (isLarge ? 64U : 16U) + 1;
    const FrameShape shape{width, height, width + inData[3] % 8U, (options & 2) != 0};
    const std::string rest(inData + 4, inData + inSize);
    if (options & 1)
        CheckEncoding(codec, static_cast<std::uint8_t>(1 + (options >> 2) % 8), rest, shape);
    else
        CheckDecoding(codec, rest, shape);
    return 0;
}

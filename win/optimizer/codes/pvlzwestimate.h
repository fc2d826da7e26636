#pragma once

#include <cstdint>

#include "win/optimizer/codes/pvlzwparser.h"

class NvGIFFrame;
class NvIndexedImage;

/** Measures how long a frame's LZW data would be, without writing any. */
class PvLZWEstimator {
public:
    /** @param ioStrings  scratch space while it measures; borrowed for the estimator's life */
    explicit PvLZWEstimator(NvLZWStringTable& ioStrings) : mParser(ioStrings) {}

    /** Length in bits of the codes that the GIF encoder would write for a frame, first clear code and end
     *  code included; no byte rounding, no block headers.
     *
     *  @param inPixels      first pixel of the top row; every index is below inColorCount
     *  @param inWidth       pixels per row
     *  @param inHeight      rows
     *  @param inStride      bytes from one row to the next
     *  @param inColorCount  1 to 256, decides the code width as for the writer
     *  @param inInterlaced  rows are taken in the order in which an interlaced frame stores them
     *  @throws NvErrorCode  21 for a colour count that no table can have */
    std::uint64_t EstimateLZWSize(const std::uint8_t* inPixels, std::uint32_t inWidth, std::uint32_t inHeight,
                                  std::uint32_t inStride, std::uint32_t inColorCount, bool inInterlaced);

    /** The same for a whole image, and for a frame. */
    std::uint64_t EstimateImage(const NvIndexedImage& inImage, bool inInterlaced);
    std::uint64_t EstimateFrame(const NvGIFFrame& inFrame);

private:
    PvLZWParser mParser;
};

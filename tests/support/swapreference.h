#pragma once

#include "tests/support/test.h"

/** The pixel swap search written down as plainly as it can be said: every trial encodes the whole frame. It
 *  shares nothing with the program. */
struct SwapReference {
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    std::vector<std::uint8_t> mPixels;  // row-major
    std::vector<std::uint32_t> mColors; // 0xRRGGBB, decides the code width too
    bool mInterlaced = false;
    int mTransparent = -1;

    /** The pixels in file order. */
    std::vector<std::uint8_t> Stream() const;

    /** Bits of the frame's LZW codes. */
    std::uint64_t Estimate() const;

    /** The places that the search would try in the frame as it is. */
    std::uint32_t CountCandidates() const;

    /** Search and keep what makes the estimate drop. @return pairs exchanged */
    std::uint32_t Search();

    /** Exchange every pair that qualifies. */
    void PostDither();

private:
    bool Qualifies(std::uint32_t inX, std::uint32_t inY, int inSpared) const;
    int EdgeStrength(std::uint32_t inX, std::uint32_t inY) const;
    template <typename Visitor>
    void ForEachPlace(Visitor inVisit);
};

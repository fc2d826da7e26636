#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvrealimage.h"

class NvIndexedImage;

/** A mask: one bit per pixel, the leftmost in the top bit of a byte, rows padded to a whole byte. The padding
 *  bits have no meaning and no promised value.
 *
 *  The polarity says which stored bit means "set": 1 for polarity 0, 0 for polarity 1. */
class NvBitmapImage : public NvRealImage {
public:
    /** 0 by 0 pixels. */
    NvBitmapImage();
    /** Filled with inFill, 1 for set and 0 for not set, which is also what Erase will write. Raises 21 for a
     *  polarity other than 0 and 1. */
    NvBitmapImage(std::uint32_t inWidth, std::uint32_t inHeight, std::uint8_t inPolarity = 0,
                  std::uint32_t inFill = 0);
    NvBitmapImage(NvBitmapImage&& ioImage) noexcept = default;
    NvBitmapImage& operator=(NvBitmapImage&& ioImage) noexcept = default;

    /** The stored bit, 0 or 1, of a pixel of a picture whose first row begins at iBuffer, whatever the
     *  polarity. */
    static std::uint32_t GetBit(const std::uint8_t* iBuffer, std::uint32_t iRowBytes, std::uint32_t iColumn,
                                std::uint32_t iRow) {
        NvAssert(iRowBytes && iBuffer);
        return iBuffer[std::size_t{iRow} * iRowBytes + iColumn / 8] >> (7 - iColumn % 8) & 1u;
    }
    /** Stores a bit, 0 or 1, for a pixel. */
    static void SetBit(std::uint8_t* iBuffer, std::uint32_t iRowBytes, std::uint32_t iColumn,
                       std::uint32_t iRow, std::uint32_t iBit) {
        NvAssert(iRowBytes && iBuffer);
        std::uint8_t& eight = iBuffer[std::size_t{iRow} * iRowBytes + iColumn / 8];
        const unsigned mask = 0x80u >> iColumn % 8;
        eight = static_cast<std::uint8_t>(iBit ? eight | mask : eight & ~mask);
    }

    std::uint8_t GetPolarity() const { return mPolarity; }
    /** Changes what the stored bits mean, not the bits. Raises 21 for values other than 0 and 1. */
    void SetPolarity(std::uint8_t inPolarity);
    /** 1 when Erase sets every pixel, 0 when it sets none, as in the masks of this program. */
    std::uint32_t GetFill() const { return mFill; }
    void SetFill(std::uint32_t inFill) { mFill = inFill; }

    std::unique_ptr<NvImage> Clone() const override;
    /** Set pixels read as white, the others as black. */
    void ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                 const NvRGBLayout& inLayout) const override;
    /** Keeps polarity and fill value; every stored bit is 0. */
    std::unique_ptr<NvImage> NewBlankImage(const NvRect& inRect) const override;
    /** Raises 21 when the two differ in polarity. */
    void CopyFrom(const NvImage& inImage) override;
    /** Makes every pixel set, or not set, as the fill value says. Without pixels nothing happens. */
    void Erase() override;
    /** The background is what is not set. */
    bool FindContentBounds(NvRect& outBounds) const override;
    void Combine(const NvBitmapImage& inMask, NvMaskRule inRule) override;
    void WriteMasked(const NvRect& inMaskRect, const std::uint8_t* inColors, std::uint32_t inColorRowBytes,
                     const NvPixelTarget& inTarget) const override;
    void BlendMasked(const NvRect& inMaskRect, const std::uint8_t* inColors, std::uint32_t inColorRowBytes,
                     const NvPixelTarget& inTarget, double inOpacity) const override;
    /** What was set is not, and the reverse. */
    void Invert() override;
    /** A picture of two colours: index 1 where the mask is set, 0 elsewhere. Defined beside its only caller,
     *  the image converter, so that masks need not know indexed images, which do know masks. */
    virtual NvIndexedImage ToIndexed(NvColor inNotSet, NvColor inSet) const;

private:
    /** Calls inMix(destination byte, colour byte) for the three channels of every set pixel. */
    template <typename Mix>
    void MixMasked(const NvRect& inMaskRect, const std::uint8_t* inColors, std::uint32_t inColorRowBytes,
                   const NvPixelTarget& inTarget, Mix inMix) const;
    /** Byte inByte of a row with a 1 for every set pixel, and 0 in the padding. */
    unsigned BitsSetIn(const std::uint8_t* inRow, std::size_t inByte) const {
        const std::size_t left = mWidth - inByte * 8;
        const unsigned inside = left < 8 ? 0xFF00u >> left & 0xFFu : 0xFFu;
        return (inRow[inByte] ^ (mPolarity ? 0xFFu : 0u)) & inside;
    }

    std::uint32_t mFill;    // 0 or 1
    std::uint8_t mPolarity; // 0 or 1
};

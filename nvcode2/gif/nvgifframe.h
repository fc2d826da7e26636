#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/gif/nvgifinfo.h"
#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvimage.h"
#include "nvcode2/image/nvindexedimage.h"

/** One frame of a GIF in memory: its indexed pixels, the mask of those that are drawn, and its record.
 *
 *  The mask decides what is drawn; the record's transparency only follows from it, and UpdateTransparency
 *  brings it up to date after the mask or the indices have changed. The pixels' colour table is the one the
 *  frame is shown with: a copy of its local table, or the leading entries of the shared one.
 *
 *  Image and mask have the frame's size; the record is the image's format information. */
class NvGIFFrame final : public NvImage {
public:
    /** @param inImage  the pixels; taken over
     *  @param inMask   as large as the image, set where a pixel is drawn, polarity 0; taken over
     *  @param inInfo   the record, its size that of the image; taken over, not null */
    NvGIFFrame(NvIndexedImage&& inImage, NvBitmapImage&& inMask, std::unique_ptr<NvGIFFrameInfo> inInfo);

    std::unique_ptr<NvImage> Clone() const override;
    /** What Clone makes, as what it is. */
    std::unique_ptr<NvGIFFrame> Copy() const;

    /** Writes the drawn pixels' colours; what lies under undrawn ones stays. */
    void ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                 const NvRGBLayout& inLayout) const override;

    /** A frame always has a record, and of a GIF. Raise 38 for none or another format's, and 37. */
    void SetFormatInfo(std::unique_ptr<NvImgFmtFrameInfo> inInfo) override;
    std::unique_ptr<NvImgFmtFrameInfo> DetachFormatInfo() override;

    NvIndexedImage& GetImage() { return mImage; }
    const NvIndexedImage& GetImage() const { return mImage; }
    NvBitmapImage& GetMask() { return mMask; }
    const NvBitmapImage& GetMask() const { return mMask; }
    NvGIFFrameInfo& GetInfo() { return static_cast<NvGIFFrameInfo&>(*GetFormatInfo()); }
    const NvGIFFrameInfo& GetInfo() const { return static_cast<const NvGIFFrameInfo&>(*GetFormatInfo()); }

    /** Replaces the pixels by others of the same size. */
    void SetImage(NvIndexedImage&& inImage);

    /** The frame's rectangle on the logical screen. */
    NvRect GetScreenRect() const;

    /** The smallest rectangle of the frame that holds every drawn pixel; empty when nothing is drawn. */
    NvRect FindDrawnBounds() const;

    /** A copy of a part of the frame, its position on the screen moved accordingly.
     *  @param inRect  in the frame's own pixels, not empty, inside the frame */
    std::unique_ptr<NvGIFFrame> CropCopy(const NvRect& inRect) const;

    bool HasTransparency() const { return GetInfo().mHasTransparency != 0; }
    std::uint8_t GetTransparentIndex() const { return GetInfo().mTransparentIndex; }

    /** Whether every pixel of the frame is drawn. */
    bool IsFullyDrawn() const;

    /** Brings transparency flag, transparent index, the undrawn pixels' indices and the tables into line with
     *  the mask.
     *
     *  Undrawn pixels take the lowest index that no drawn pixel uses, or keep the present one where that
     * makes codes no wider. When every index is in use a black entry is appended; when the table may not
     * grow, the colour whose loss costs least gives up its slot.
     *
     *  @param ioSharedTable  the table of a frame without a local one, extended together with the frame's
     *  own; null for a frame with a local table
     *  @param inTableLimit   entries that table may have at most, 2 to 256 */
    void UpdateTransparency(NvColorTable* ioSharedTable, std::uint32_t inTableLimit);

    /** The same for callers that know the drawn pixels per index already. */
    void UpdateTransparency(NvColorTable* ioSharedTable, std::uint32_t inTableLimit,
                            const NvHistogram& inHistogram);

    /** The reverse, for callers that have drawn undrawn pixels: those that still have the transparent index
     * are undrawn. Precondition: HasTransparency(). */
    void UpdateMask();

    /** Gives every undrawn pixel an index of the table. */
    void SetUndrawnPixels(std::uint8_t inIndex);

private:
    std::uint32_t FindTransparentSlot(NvColorTable* ioSharedTable, std::uint32_t inTableLimit,
                                      const NvHistogram& inHistogram);
    void AppendEntry(NvColorTable* ioSharedTable);
    std::uint32_t FreeCheapestSlot(const std::uint32_t* inHistogram);

    NvIndexedImage mImage;
    NvBitmapImage mMask;
};

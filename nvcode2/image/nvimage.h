#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvimgfmtinfo.h"
#include "nvcode2/image/nvpixelblock.h"

class NvBitmapImage;
class NvProgressIndicator;

/** How two masks are combined: the pixels set afterwards are those set in ... */
enum class NvMaskRule {
    km_Both,
    km_Either,
    km_OnlyThis, ///< this mask and not in the other
};

/** An image: a size, a resolution and what its file format said of it. How pixels are kept is up to the
 *  classes derived from it; what a class cannot do raises 37.
 *
 *  The program needs only some of the operations. The others (handing format information over, mirroring
 *  sideways, filling, inverting, combining and blending through masks, channels and the like) are what
 *  programs that edit pictures ask of them.
 *
 *  Images are not copied by accident: Clone and CopyFrom copy pixels, moving hands them over. A moved-from
 *  image may only be destroyed or assigned to. */
class NvImage {
public:
    /** Kinds of image; only images of one kind are combined. */
    enum Type : std::uint32_t {
        km_IndexedImage = 1,
        km_RGBImage = 2,
        km_BitmapImage = 3,
        km_GIFFrame = 4,
    };

    NvImage(const NvImage&) = delete;
    NvImage& operator=(const NvImage&) = delete;

    // The virtual operations keep this order; new ones come last.

    /** A new image of the same class and contents. Format information stays with the original (see
     *  CopyFormatInfo). */
    virtual std::unique_ptr<NvImage> Clone() const = 0;

    /** Width and height in pixels. What becomes of the pixels is up to the class. */
    virtual void SetSize(std::uint32_t inWidth, std::uint32_t inHeight);
    virtual std::uint32_t GetWidth() const { return mWidth; }
    virtual std::uint32_t GetHeight() const { return mHeight; }

    /** Pixels per inch; 100 by 100 unless set. For formats that have a resolution: a GIF has only an aspect
     *  ratio. */
    virtual void SetResolution(std::uint32_t inHorizontal, std::uint32_t inVertical);

    /** Null when the image has none; owned by the image. */
    virtual const NvImgFmtFrameInfo* GetFormatInfo() const { return mFormatInfo.get(); }
    /** Replaces the format information; null takes it away. */
    virtual void SetFormatInfo(std::unique_ptr<NvImgFmtFrameInfo> inInfo);
    /** Takes a clone of the other image's format information, or none if it has none. */
    virtual void CopyFormatInfo(const NvImage& inImage);
    /** Gives the format information away; the image then has none. */
    virtual std::unique_ptr<NvImgFmtFrameInfo> DetachFormatInfo();
    /** Hands this image's format information, if any, to another image, whose own is released. For a changed
     *  picture that takes the place of this one. */
    virtual void HandOverFormatInfo(NvImage& ioImage);

    /** Writes a rectangle's colours into the caller's memory.
     *
     *  @param inSourceRect    not empty, inside the image
     *  @param outData         first pixel of the first row written; only whole pixels of the rectangle's size
     *                         are touched
     *  @param inDestRowBytes  from one row written to the next
     *  Preconditions: the layout's positions are distinct and below its pixel size; outData non-null. */
    virtual void ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                         const NvRGBLayout& inLayout) const = 0;

    /** A new image of the same class that holds a rectangle of this one. The rectangle lies inside the image
     *  and is not empty. */
    virtual std::unique_ptr<NvImage> CopyRegion(const NvRect& inRect) const;
    /** Copies a whole image of the same kind over this one, its top left at inTopLeft; it must fit. */
    virtual void PasteImage(const NvImage& inImage, NvPoint inTopLeft);

    /** The smallest rectangle that holds every pixel that is not background; false, and an empty rectangle,
     *  when there is none. */
    virtual bool FindContentBounds(NvRect& outBounds) const;
    /** Combines a mask, pixel by pixel, with another of the same size. */
    virtual void Combine(const NvBitmapImage& inMask, NvMaskRule inRule);

    /** A new image with every row reversed, for editors of pictures. */
    virtual std::unique_ptr<NvImage> NewHorizontalMirror() const;
    /** A new image with the order of the rows reversed: screens want the bottom row first. */
    virtual std::unique_ptr<NvImage> NewVerticalMirror() const;

    /** Exchanges the palette: every colour becomes the one the map gives for it.
     *  @param inTablePtr  the new palette
     *  @param inInvMap    its map, see MakeInverseColorMap */
    virtual void MapToTable(const NvColorTable* inTablePtr, const std::uint8_t* inInvMap);

    /** Writes a rectangle's colours at a point of the caller's pixels, for a screen; nothing calls the four
     *  operations below, which are for editors of pictures. Precondition, as one assertion: the rectangle
     *  is not empty and inside the image, the layout's positions are distinct and below its pixel size, and
     *  the target's row holds the pixels from the point on. */
    virtual void ReadColors(const NvRect& inSourceRect, const NvPixelTarget& inTarget) const;
    /** The same for the pixels that a mask of the image's size has set; the others stay. */
    virtual void ReadMaskedColors(const NvRect& inSourceRect, const NvBitmapImage& inMask,
                                  const NvPixelTarget& inTarget) const;
    /** Copies one channel, of 8 or 16 bits, of a rectangle into packed rows of the caller's, and back. */
    virtual void ReadChannel(std::uint32_t inChannel, const NvRect& inSourceRect, std::uint8_t* outData,
                             std::uint32_t inDestRowBytes) const;
    virtual void WriteChannel(std::uint32_t inChannel, const NvRect& inDestRect, const std::uint8_t* inData,
                              std::uint32_t inSourceRowBytes);
    /** Exchanges two channels of 8 bits. */
    virtual void SwapChannels(std::uint32_t inChannelA, std::uint32_t inChannelB);

    /** WriteMasked, mixed with what is there: inOpacity 0 keeps it, 1 replaces it, and what lies between is
     *  rounded to 1/256. Beyond the ends counts as the end. */
    virtual void BlendMasked(const NvRect& inMaskRect, const std::uint8_t* inColors,
                             std::uint32_t inColorRowBytes, const NvPixelTarget& inTarget,
                             double inOpacity) const;

    virtual ~NvImage();

protected:
    /** Back to no size, no format information and resolution 100, without regard to pixels. */
    virtual void ResetFields() noexcept;

public:
    /** A new, blank image of the same class, sized like the rectangle, with packed rows. */
    virtual std::unique_ptr<NvImage> NewBlankImage(const NvRect& inRect) const;
    /** Becomes a copy of an image of the same class: size, resolution, pixels and what they need. */
    virtual void CopyFrom(const NvImage& inImage);

    /** Writes colours through a mask: where it is set, the caller's colour goes into the caller's pixels.
     *
     *  @param inMaskRect       the part of the mask; an empty one does nothing
     *  @param inColors         packed RGB pixels for that part, red first
     *  @param inColorRowBytes  from one row of them to the next
     *  @param inTarget         where the part's top left pixel goes; its rows hold the part's pixels */
    virtual void WriteMasked(const NvRect& inMaskRect, const std::uint8_t* inColors,
                             std::uint32_t inColorRowBytes, const NvPixelTarget& inTarget) const;
    /** Turns the picture into its negative. */
    virtual void Invert();
    /** The picture resampled to another size by area average (see nvresize.h). Raises 3 when the indicator,
     *  which may be null, stops the work. */
    virtual std::unique_ptr<NvImage> NewResizedImage(std::uint32_t inWidth, std::uint32_t inHeight,
                                                     NvProgressIndicator* inIndicator) const;

    /** Sets every pixel to the class's background. */
    virtual void Erase();

    /** One of Type. */
    std::uint32_t GetImageType() const { return mImageType; }
    std::uint32_t GetHorizontalResolution() const { return mHorizontalResolution; }
    std::uint32_t GetVerticalResolution() const { return mVerticalResolution; }
    NvImgFmtFrameInfo* GetFormatInfo() {
        return const_cast<NvImgFmtFrameInfo*>(static_cast<const NvImage*>(this)->GetFormatInfo());
    }

    /** Writes a rectangle's colours into a rectangle, of the same size, of a larger picture in memory.
     *  outData is that picture's first byte; the rest as for ReadRGB. */
    void ReadRGBAt(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                   const NvRect& inDestRect, const NvRGBLayout& inLayout) const;

protected:
    NvImage(std::uint32_t inWidth, std::uint32_t inHeight, Type inImageType);
    NvImage(NvImage&& ioImage) noexcept;
    /** Precondition: both images are of one kind. */
    NvImage& operator=(NvImage&& ioImage) noexcept;

    std::uint32_t mWidth;  // pixels
    std::uint32_t mHeight; // pixels

private:
    const Type mImageType;
    std::uint32_t mHorizontalResolution = 100;
    std::uint32_t mVerticalResolution = 100;
    std::unique_ptr<NvImgFmtFrameInfo> mFormatInfo;
};

/** Checks what every reader into an RGB layout asks of it. */
void NvAssertLayout(const NvRGBLayout& inLayout);

/** Copies a rectangle of pixels to a rectangle of the same size; neither may be empty.
 *
 *  Both blocks have the same number of channels, of 1, 8 or 16 bits. One-bit pixels are packed, the leftmost
 *  in the top bit, and may be copied to any column. Pixels beside the destination rectangle keep their
 *  values. Source and destination do not overlap. */
void NvCopyRect(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, const NvPixelBlock& inDst,
                const NvRect& inDstRect, std::uint32_t inChannelBitDepth);

/** Copies a rectangle of pixels into wider ones, whose other channels stay: source channel 0 goes to channel
 *  inDstIndex. Channels have 8 or 16 bits; otherwise as NvCopyRect.
 *  Precondition: (inSrcChannels + inDstIndex) <= inDstChannels. */
void NvCopyIntoChannels(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, const NvPixelBlock& inDst,
                        const NvRect& inDstRect, std::uint32_t inDstIndex, std::uint32_t inChannelBitDepth);

/** The reverse: copies the channels from inSrcIndex on into narrower pixels.
 *  Precondition: (inDstChannels + inSrcIndex) <= inSrcChannels. */
void NvCopyFromChannels(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, std::uint32_t inSrcIndex,
                        const NvPixelBlock& inDst, const NvRect& inDstRect, std::uint32_t inChannelBitDepth);

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/image/nvimgfmtinfo.h"
#include "nvcode2/image/nvpixelblock.h"

/** Where red, green and blue lie in a pixel of somebody else's memory. The other bytes of such a pixel are
 *  never touched. */
struct NvRGBLayout {
    std::uint32_t pixelBytes = 3;
    std::uint32_t redIndex = 0;
    std::uint32_t greenIndex = 1;
    std::uint32_t blueIndex = 2;
};

/** Pixels of somebody else's memory that an image writes into, from a point on. */
struct NvPixelTarget {
    std::uint8_t* data;     ///< first byte of the first row
    std::uint32_t rowBytes; ///< from one row to the next
    NvPoint point;          ///< where the top left pixel goes
    NvRGBLayout layout;

    /** The pixel at the point. */
    std::uint8_t* First() const {
        return data + static_cast<std::size_t>(point.v) * rowBytes +
               static_cast<std::size_t>(point.h) * layout.pixelBytes;
    }
};

/** An image: a size, a resolution and what its file format said of it. How pixels are kept is for the
 *  classes below to say; what a class cannot do raises 37.
 *
 *  The program needs only some of the operations. The others (handing format information over, mirroring,
 *  filling, inverting, combining and blending through masks and the like) are what any program that shows or
 *  edits pictures asks of them.
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
    virtual ~NvImage();

    /** A new image of the same class and contents. Format information stays with the original (see
     *  CopyFormatInfo). */
    virtual std::unique_ptr<NvImage> Clone() const = 0;

    /** Width and height in pixels. What becomes of the pixels is for the class to say. */
    virtual void SetSize(std::uint32_t inWidth, std::uint32_t inHeight);
    virtual std::uint32_t GetWidth() const { return mWidth; }
    virtual std::uint32_t GetHeight() const { return mHeight; }
    /** One of Type. */
    std::uint32_t GetImageType() const { return mImageType; }

    /** Pixels per inch; 100 by 100 unless set.
     *  No caller yet in the program: a GIF has an aspect ratio but no resolution. */
    virtual void SetResolution(std::uint32_t inHorizontal, std::uint32_t inVertical);
    std::uint32_t GetHorizontalResolution() const { return mHorizontalResolution; }
    std::uint32_t GetVerticalResolution() const { return mVerticalResolution; }

    /** Null when the image has none; owned by the image. */
    virtual NvImgFmtFrameInfo* GetFormatInfo() { return mFormatInfo.get(); }
    virtual const NvImgFmtFrameInfo* GetFormatInfo() const { return mFormatInfo.get(); }
    /** Replaces the format information; null takes it away. */
    virtual void SetFormatInfo(std::unique_ptr<NvImgFmtFrameInfo> inInfo);
    /** Takes a clone of the other image's format information, or none if it has none. */
    virtual void CopyFormatInfo(const NvImage& inImage);
    /** Gives the format information away; the image then has none. */
    virtual std::unique_ptr<NvImgFmtFrameInfo> DetachFormatInfo();
    /** Hands this image's format information, if any, to another image, whose own is released.
     *  For a changed picture that takes the place of this one. */
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

    /** Writes a rectangle's colours into a rectangle, of the same size, of a larger picture in memory.
     *  outData is that picture's first byte; the rest as for ReadRGB. */
    void ReadRGBAt(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                   const NvRect& inDestRect, const NvRGBLayout& inLayout) const;

    /** A new image of the same class that holds a rectangle of this one. The rectangle lies inside the image
     *  and is not empty. */
    virtual std::unique_ptr<NvImage> CopyRegion(const NvRect& inRect) const;
    /** Copies a whole image of the same kind over this one, its top left at inTopLeft; it must fit. */
    virtual void PasteImage(const NvImage& inImage, NvPoint inTopLeft);
    /** A new, blank image of the same class, sized like the rectangle, with packed rows. */
    virtual std::unique_ptr<NvImage> NewBlankImage(const NvRect& inRect) const;
    /** Becomes a copy of an image of the same class: size, resolution, pixels and what they need. */
    virtual void CopyFrom(const NvImage& inImage);
    /** Sets every pixel to the class's background. */
    virtual void Erase();

    /** A new image with every row reversed.
     *  Like the next, no caller yet in the program: a step every viewer on this library needs. */
    virtual std::unique_ptr<NvImage> NewHorizontalMirror() const;
    /** A new image with the order of the rows reversed. */
    virtual std::unique_ptr<NvImage> NewVerticalMirror() const;

protected:
    NvImage(std::uint32_t inWidth, std::uint32_t inHeight, Type inImageType);
    NvImage(NvImage&& ioImage) noexcept;
    /** Precondition: both images are of one kind. */
    NvImage& operator=(NvImage&& ioImage) noexcept;

    /** Back to no size, no format information and resolution 100, without regard to pixels. */
    virtual void ResetFields() noexcept;

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

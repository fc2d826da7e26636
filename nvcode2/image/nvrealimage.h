#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/image/nvbuffer.h"
#include "nvcode2/image/nvimage.h"

/** Bytes in a row of inWidth pixels; raises 2 when they do not fit 32 bits. Preconditions: the depth is 1,
 *  8 or 16 bits, the channel count not 0. */
using NvRowBytesProc = std::uint32_t (*)(std::uint16_t inChannelDepth, std::uint16_t inNumChannels,
                                         std::uint32_t inWidth);

/** Padded to whole bytes only. Every image of the program uses this one. */
std::uint32_t NvPackedRowBytes(std::uint16_t inChannelDepth, std::uint16_t inNumChannels,
                               std::uint32_t inWidth);
/** The same, padded to a multiple of 4 bytes: the rows of a Windows bitmap in memory. */
std::uint32_t NvAlignedRowBytes(std::uint16_t inChannelDepth, std::uint16_t inNumChannels,
                                std::uint32_t inWidth);

/** An image with pixels: one buffer of mHeight rows, top row first, no gap between them.
 *
 *  Pixels are touched only while the buffer is locked (NvPixelLock). Whatever allocates raises 2 when
 *  memory is out or a size does not fit a buffer, and leaves the image as it was. Of the operations that
 *  only some classes have, those that find bounds, combine masks or exchange palettes fail an assertion in
 *  the others; the rest raises 37. */
class NvRealImage : public NvImage {
public:
    /** A zeroed image.
     *
     *  @param inChannelDepth    bits per channel: 1, 8 or 16
     *  @param inNumChannels     channels per pixel, at least 1
     *  @param inRowBytesProcPtr how rows are laid out, for the life of the image
     *  @param inBuffer          where pixels go; null for an NvBuffer */
    NvRealImage(std::uint32_t inWidth, std::uint32_t inHeight, std::uint16_t inChannelDepth,
                std::uint16_t inNumChannels, NvRowBytesProc inRowBytesProcPtr,
                std::unique_ptr<NvBaseBuffer> inBuffer, Type inImageType);
    ~NvRealImage() override;

    std::unique_ptr<NvImage> Clone() const override;
    /** Pixels are kept when the size stays the same; otherwise they are unspecified. Precondition: not
     *  locked. */
    void SetSize(std::uint32_t inWidth, std::uint32_t inHeight) override;
    void ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                 const NvRGBLayout& inLayout) const override;
    std::unique_ptr<NvImage> CopyRegion(const NvRect& inRect) const override;
    void PasteImage(const NvImage& inImage, NvPoint inTopLeft) override;
    bool FindContentBounds(NvRect& outBounds) const override;
    void Combine(const NvBitmapImage& inMask, NvMaskRule inRule) override;
    /** One-bit pixels have one channel. */
    std::unique_ptr<NvImage> NewHorizontalMirror() const override;
    std::unique_ptr<NvImage> NewVerticalMirror() const override;
    void MapToTable(const NvColorTable* inTablePtr, const std::uint8_t* inInvMap) override;
    void ReadColors(const NvRect& inSourceRect, const NvPixelTarget& inTarget) const override;
    void ReadMaskedColors(const NvRect& inSourceRect, const NvBitmapImage& inMask,
                          const NvPixelTarget& inTarget) const override;
    void ReadChannel(std::uint32_t inChannel, const NvRect& inSourceRect, std::uint8_t* outData,
                     std::uint32_t inDestRowBytes) const override;
    void WriteChannel(std::uint32_t inChannel, const NvRect& inDestRect, const std::uint8_t* inData,
                      std::uint32_t inSourceRowBytes) override;
    void SwapChannels(std::uint32_t inChannelA, std::uint32_t inChannelB) override;
    std::unique_ptr<NvImage> NewBlankImage(const NvRect& inRect) const override;
    void CopyFrom(const NvImage& inImage) override;
    void Erase() override;

    std::uint16_t GetChannelDepth() const { return mChannelDepth; }
    std::uint16_t GetNumChannels() const { return mNumChannels; }
    /** From one row to the next. */
    std::uint32_t GetRowBytes() const { return mRowBytes; }
    /** Whether there are pixels: a size that is not zero, and memory for it. */
    bool IsAllocated() const;
    bool IsLocked() const { return mBufferPtr && mBufferPtr->IsLocked(); }
    /** The whole image as a rectangle. */
    NvRect GetBounds() const;

    /** The first byte of the top row, until the matching Unlock. Prefer NvPixelLock. */
    std::uint8_t* Lock();
    const std::uint8_t* Lock() const;
    void Unlock() const;
    /** Ends the process when pixels are touched outside of a lock. */
    void AssertLocked() const { NvAssert(mBufferPtr && mBufferPtr->IsAllocated() && mBufferPtr->IsLocked()); }

protected:
    NvRealImage(NvRealImage&& ioImage) noexcept;
    NvRealImage& operator=(NvRealImage&& ioImage) noexcept;

    void ResetFields() noexcept override;
    /** Makes room for mHeight rows of CalcRowBytes. A buffer that has that size already is kept as it is. */
    virtual void AllocateBuffer();
    /** Releases the pixels, and before that one lock if there is any. */
    virtual void FreeBuffer();
    virtual std::uint32_t CalcRowBytes() const;

    /** Copies all pixels from an image of the same kind and size. */
    void CopyPixels(const NvRealImage& inImage);
    /** Makes a bounding rectangle hold columns [inLeft, inRight) of row inY as well; rows come from top to
     *  bottom. */
    static void GrowBounds(NvRect& ioBounds, std::int32_t inLeft, std::int32_t inRight, std::int32_t inY);
    /** Ends the process unless the rectangle is not empty and inside the image. */
    void AssertInside(const NvRect& inSourceRect) const;

private:
    void AllocateRows(std::uint32_t inRowBytes);
    void AssertSameShape(const NvImage& inImage) const;
    void AssertTransfer(const NvRect& inSourceRect, const NvPixelTarget& inTarget) const;

    std::unique_ptr<NvBaseBuffer> mBufferPtr; // null only after a move
    std::uint16_t mChannelDepth;              // bits: 1, 8 or 16
    std::uint16_t mNumChannels;
    std::uint32_t mRowBytes = 0;
    NvRowBytesProc mRowBytesProc;
};

/** Locks an image's pixels for the life of a scope. Borrows the image, whose size must not change
 *  meanwhile. */
class NvPixelLock {
public:
    explicit NvPixelLock(NvRealImage& ioImage)
        : mImage(ioImage), mPixels(ioImage.Lock()), mRowBytes(ioImage.GetRowBytes()) {}
    ~NvPixelLock() { mImage.Unlock(); }
    NvPixelLock(const NvPixelLock&) = delete;
    NvPixelLock& operator=(const NvPixelLock&) = delete;

    /** The first byte of row inY, counted from the top. */
    std::uint8_t* Row(std::uint32_t inY) const {
        mImage.AssertLocked();
        return mPixels + std::size_t{inY} * mRowBytes;
    }

    /** All pixels, for as long as the lock is held. */
    NvPixelBlock GetBlock() const {
        return {Row(0), mRowBytes, mImage.GetWidth(), mImage.GetHeight(), mImage.GetNumChannels()};
    }

private:
    NvRealImage& mImage;
    std::uint8_t* mPixels;
    std::uint32_t mRowBytes;
};

/** The same for reading. */
class NvConstPixelLock {
public:
    explicit NvConstPixelLock(const NvRealImage& inImage)
        : mImage(inImage), mPixels(inImage.Lock()), mRowBytes(inImage.GetRowBytes()) {}
    ~NvConstPixelLock() { mImage.Unlock(); }
    NvConstPixelLock(const NvConstPixelLock&) = delete;
    NvConstPixelLock& operator=(const NvConstPixelLock&) = delete;

    const std::uint8_t* Row(std::uint32_t inY) const {
        mImage.AssertLocked();
        return mPixels + std::size_t{inY} * mRowBytes;
    }

    NvConstPixelBlock GetBlock() const {
        return {Row(0), mRowBytes, mImage.GetWidth(), mImage.GetHeight(), mImage.GetNumChannels()};
    }

private:
    const NvRealImage& mImage;
    const std::uint8_t* mPixels;
    std::uint32_t mRowBytes;
};

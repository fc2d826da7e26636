#include "nvcode2/image/nvrealimage.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nverrorcode.h"

namespace {

constexpr std::uint64_t km_MaxBytes = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t km_MaxSide = std::numeric_limits<std::int32_t>::max(); // of a rectangle

std::uint64_t PackedRowBytes64(std::uint16_t inChannelDepth, std::uint16_t inNumChannels,
                               std::uint32_t inWidth) {
    NvAssert(inNumChannels);
    NvAssert(inChannelDepth == 1 || inChannelDepth == 8 || inChannelDepth == 16);
    return (std::uint64_t{inNumChannels} * inWidth * inChannelDepth + 7) / 8;
}

std::uint32_t CheckedBytes(std::uint64_t inBytes) {
    if (inBytes > km_MaxBytes)
        NvThrow(NvErrorCode::km_OutOfMemory);
    return static_cast<std::uint32_t>(inBytes);
}

} // namespace

std::uint32_t NvPackedRowBytes(std::uint16_t inChannelDepth, std::uint16_t inNumChannels,
                               std::uint32_t inWidth) {
    return CheckedBytes(PackedRowBytes64(inChannelDepth, inNumChannels, inWidth));
}

std::uint32_t NvAlignedRowBytes(std::uint16_t inChannelDepth, std::uint16_t inNumChannels,
                                std::uint32_t inWidth) {
    return CheckedBytes((PackedRowBytes64(inChannelDepth, inNumChannels, inWidth) + 3) & ~std::uint64_t{3});
}

NvRealImage::NvRealImage(std::uint32_t inWidth, std::uint32_t inHeight, std::uint16_t inChannelDepth,
                         std::uint16_t inNumChannels, NvRowBytesProc inRowBytesProcPtr,
                         std::unique_ptr<NvBaseBuffer> inBuffer, Type inImageType)
    : NvImage(inWidth, inHeight, inImageType),
      mBufferPtr(std::move(inBuffer)),
      mChannelDepth(inChannelDepth),
      mNumChannels(inNumChannels),
      mRowBytesProc(inRowBytesProcPtr) {
    NvAssert(inChannelDepth && inNumChannels);
    NvAssert(inRowBytesProcPtr);
    AllocateRows(inRowBytesProcPtr(inChannelDepth, inNumChannels, inWidth));
    NvRealImage::Erase();
}

NvRealImage::NvRealImage(NvRealImage&& ioImage) noexcept
    : NvImage(static_cast<NvImage&&>(ioImage)),
      mBufferPtr(std::move(ioImage.mBufferPtr)),
      mChannelDepth(ioImage.mChannelDepth),
      mNumChannels(ioImage.mNumChannels),
      mRowBytes(ioImage.mRowBytes),
      mRowBytesProc(ioImage.mRowBytesProc) {
    ioImage.NvRealImage::ResetFields();
}

NvRealImage& NvRealImage::operator=(NvRealImage&& ioImage) noexcept {
    if (this == &ioImage)
        return *this;
    NvImage::operator=(static_cast<NvImage&&>(ioImage));
    mBufferPtr = std::move(ioImage.mBufferPtr);
    mChannelDepth = ioImage.mChannelDepth;
    mNumChannels = ioImage.mNumChannels;
    mRowBytes = ioImage.mRowBytes;
    mRowBytesProc = ioImage.mRowBytesProc;
    ioImage.NvRealImage::ResetFields();
    return *this;
}

NvRealImage::~NvRealImage() {
    if (IsAllocated())
        NvRealImage::FreeBuffer();
}

void NvRealImage::ResetFields() noexcept {
    NvImage::ResetFields();
    mBufferPtr.reset();
    mChannelDepth = 0;
    mNumChannels = 0;
    mRowBytes = 0;
}

bool NvRealImage::IsAllocated() const {
    return mBufferPtr && mWidth != 0 && mHeight != 0 && mBufferPtr->IsAllocated();
}

NvRect NvRealImage::GetBounds() const {
    return {0, 0, static_cast<std::int32_t>(mWidth), static_cast<std::int32_t>(mHeight)};
}

std::uint8_t* NvRealImage::Lock() {
    NvAssert(mBufferPtr && mBufferPtr->IsAllocated());
    return mBufferPtr->Lock();
}

const std::uint8_t* NvRealImage::Lock() const {
    NvAssert(mBufferPtr && mBufferPtr->IsAllocated());
    return std::as_const(*mBufferPtr).Lock();
}

void NvRealImage::Unlock() const {
    NvAssert(mBufferPtr);
    mBufferPtr->Unlock();
}

void NvRealImage::AllocateBuffer() {
    AllocateRows(CalcRowBytes());
}

void NvRealImage::AllocateRows(std::uint32_t inRowBytes) {
    if (mWidth > km_MaxSide || mHeight > km_MaxSide)
        NvThrow(NvErrorCode::km_OutOfMemory);
    const std::uint32_t size = CheckedBytes(std::uint64_t{mHeight} * inRowBytes);
    if (!mBufferPtr)
        mBufferPtr = NvAllocate([&] { return std::make_unique<NvBuffer>(); });
    if (!mBufferPtr->IsAllocated() || mBufferPtr->GetSize() != size) {
        NvRealImage::FreeBuffer();
        mBufferPtr->Allocate(size);
    }
    mRowBytes = inRowBytes;
}

void NvRealImage::FreeBuffer() {
    if (!mBufferPtr->IsAllocated())
        return;
    if (mBufferPtr->IsLocked())
        mBufferPtr->Unlock();
    mBufferPtr->Free();
}

std::uint32_t NvRealImage::CalcRowBytes() const {
    return mRowBytesProc(mChannelDepth, mNumChannels, mWidth);
}

void NvRealImage::SetSize(std::uint32_t inWidth, std::uint32_t inHeight) {
    NvAssert(mBufferPtr);
    if (inWidth == mWidth && inHeight == mHeight)
        return;
    const std::uint32_t oldWidth = mWidth;
    const std::uint32_t oldHeight = mHeight;
    std::unique_ptr<NvBaseBuffer> oldBuffer = mBufferPtr->Clone();
    oldBuffer.swap(mBufferPtr);
    NvImage::SetSize(inWidth, inHeight);
    try {
        AllocateBuffer();
    } catch (...) {
        mBufferPtr.swap(oldBuffer);
        NvImage::SetSize(oldWidth, oldHeight);
        throw;
    }
    if (oldBuffer->IsAllocated())
        oldBuffer->Free();
}

void NvRealImage::Erase() {
    NvAssert(mBufferPtr && mBufferPtr->IsAllocated());
    const NvBufferLocker pixels(*mBufferPtr);
    std::memset(pixels.Get(), 0, mBufferPtr->GetSize());
}

std::unique_ptr<NvImage> NvRealImage::Clone() const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvRealImage::ReadRGB(const NvRect& /*inSourceRect*/, std::uint8_t* /*outData*/,
                          std::uint32_t /*inDestRowBytes*/, const NvRGBLayout& /*inLayout*/) const {
    NvAssert(0);
}

std::unique_ptr<NvImage> NvRealImage::NewBlankImage(const NvRect& inRect) const {
    return NvAllocate([&] {
        return std::make_unique<NvRealImage>(
            static_cast<std::uint32_t>(inRect.Width()), static_cast<std::uint32_t>(inRect.Height()),
            mChannelDepth, mNumChannels, &NvPackedRowBytes, nullptr, static_cast<Type>(GetImageType()));
    });
}

void NvRealImage::CopyFrom(const NvImage& /*inImage*/) {}

bool NvRealImage::FindContentBounds(NvRect& /*outBounds*/) const {
    NvAssert(0);
    return false;
}

void NvRealImage::Combine(const NvBitmapImage& /*inMask*/, NvMaskRule /*inRule*/) {
    NvAssert(0);
}

void NvRealImage::MapToTable(const NvColorTable* /*inTablePtr*/, const std::uint8_t* /*inInvMap*/) {
    NvAssert(0);
}

void NvRealImage::GrowBounds(NvRect& ioBounds, std::int32_t inLeft, std::int32_t inRight, std::int32_t inY) {
    if (ioBounds.IsEmpty())
        ioBounds = {inLeft, inY, inRight, inY};
    ioBounds.left = std::min(ioBounds.left, inLeft);
    ioBounds.right = std::max(ioBounds.right, inRight);
    ioBounds.bottom = inY + 1;
}

void NvRealImage::AssertInside(const NvRect& inSourceRect) const {
    NvAssert((inSourceRect.top < inSourceRect.bottom) && (inSourceRect.left < inSourceRect.right));
    NvAssertText(std::cmp_less_equal(inSourceRect.bottom, mHeight) &&
                     std::cmp_less_equal(inSourceRect.right, mWidth),
                 "(inSourceRect.bottom <= mHeight) && (inSourceRect.right <= mWidth)");
    NvAssert(inSourceRect.top >= 0 && inSourceRect.left >= 0);
}

#include "nvcode2/image/nvimage.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"

NvImage::NvImage(std::uint32_t inWidth, std::uint32_t inHeight, Type inImageType)
    : mWidth(inWidth), mHeight(inHeight), mImageType(inImageType) {}

NvImage::NvImage(NvImage&& ioImage) noexcept
    : mWidth(ioImage.mWidth),
      mHeight(ioImage.mHeight),
      mImageType(ioImage.mImageType),
      mHorizontalResolution(ioImage.mHorizontalResolution),
      mVerticalResolution(ioImage.mVerticalResolution),
      mFormatInfo(std::move(ioImage.mFormatInfo)) {}

NvImage& NvImage::operator=(NvImage&& ioImage) noexcept {
    NvAssert(mImageType == ioImage.mImageType);
    mWidth = ioImage.mWidth;
    mHeight = ioImage.mHeight;
    mHorizontalResolution = ioImage.mHorizontalResolution;
    mVerticalResolution = ioImage.mVerticalResolution;
    mFormatInfo = std::move(ioImage.mFormatInfo);
    return *this;
}

NvImage::~NvImage() = default;

void NvImage::ResetFields() noexcept {
    mWidth = 0;
    mHeight = 0;
    mHorizontalResolution = 100;
    mVerticalResolution = 100;
    mFormatInfo.reset();
}

void NvImage::SetSize(std::uint32_t inWidth, std::uint32_t inHeight) {
    mWidth = inWidth;
    mHeight = inHeight;
}

void NvImage::SetResolution(std::uint32_t inHorizontal, std::uint32_t inVertical) {
    mHorizontalResolution = inHorizontal;
    mVerticalResolution = inVertical;
}

void NvImage::SetFormatInfo(std::unique_ptr<NvImgFmtFrameInfo> inInfo) {
    mFormatInfo = std::move(inInfo);
}

void NvImage::CopyFormatInfo(const NvImage& inImage) {
    const NvImgFmtFrameInfo* const info = inImage.GetFormatInfo();
    SetFormatInfo(info ? info->Clone() : nullptr);
}

std::unique_ptr<NvImgFmtFrameInfo> NvImage::DetachFormatInfo() {
    return std::move(mFormatInfo);
}

void NvImage::HandOverFormatInfo(NvImage& ioImage) {
    ioImage.SetFormatInfo(DetachFormatInfo());
}

void NvImage::ReadRGBAt(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                        const NvRect& inDestRect, const NvRGBLayout& inLayout) const {
    NvAssert((inDestRect.top < inDestRect.bottom) && (inDestRect.left < inDestRect.right));
    NvAssertText(static_cast<std::int64_t>(inSourceRect.bottom) <= GetHeight(),
                 "inSourceRect.bottom <= GetHeight()");
    NvAssertText(static_cast<std::int64_t>(inSourceRect.right) <= GetWidth(),
                 "inSourceRect.right <= GetWidth()");
    NvAssertLayout(inLayout);
    NvAssert(inSourceRect.top >= 0 && inSourceRect.left >= 0);
    NvAssert(inSourceRect.Width() == inDestRect.Width() && inSourceRect.Height() == inDestRect.Height());
    const NvPixelTarget target{outData, inDestRowBytes, {inDestRect.left, inDestRect.top}, inLayout};
    NvAssert(target.HasRoomFor(inDestRect.Width()));
    ReadRGB(inSourceRect, target.First(), inDestRowBytes, inLayout);
}

std::unique_ptr<NvImage> NvImage::CopyRegion(const NvRect& /*inRect*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::PasteImage(const NvImage& /*inImage*/, NvPoint /*inTopLeft*/) {
    NvThrow(NvErrorCode::km_NotSupported);
}

bool NvImage::FindContentBounds(NvRect& /*outBounds*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::Combine(const NvBitmapImage& /*inMask*/, NvMaskRule /*inRule*/) {
    NvThrow(NvErrorCode::km_NotSupported);
}

std::unique_ptr<NvImage> NvImage::NewHorizontalMirror() const {
    NvThrow(NvErrorCode::km_NotSupported);
}

std::unique_ptr<NvImage> NvImage::NewVerticalMirror() const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::MapToTable(const NvColorTable* /*inTablePtr*/, const std::uint8_t* /*inInvMap*/) {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::ReadColors(const NvRect& /*inSourceRect*/, const NvPixelTarget& /*inTarget*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::ReadMaskedColors(const NvRect& /*inSourceRect*/, const NvBitmapImage& /*inMask*/,
                               const NvPixelTarget& /*inTarget*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::ReadChannel(std::uint32_t /*inChannel*/, const NvRect& /*inSourceRect*/,
                          std::uint8_t* /*outData*/, std::uint32_t /*inDestRowBytes*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::WriteChannel(std::uint32_t /*inChannel*/, const NvRect& /*inDestRect*/,
                           const std::uint8_t* /*inData*/, std::uint32_t /*inSourceRowBytes*/) {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::SwapChannels(std::uint32_t /*inChannelA*/, std::uint32_t /*inChannelB*/) {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::BlendMasked(const NvRect& /*inMaskRect*/, const std::uint8_t* /*inColors*/,
                          std::uint32_t /*inColorRowBytes*/, const NvPixelTarget& /*inTarget*/,
                          double /*inOpacity*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

std::unique_ptr<NvImage> NvImage::NewBlankImage(const NvRect& /*inRect*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::CopyFrom(const NvImage& /*inImage*/) {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::WriteMasked(const NvRect& /*inMaskRect*/, const std::uint8_t* /*inColors*/,
                          std::uint32_t /*inColorRowBytes*/, const NvPixelTarget& /*inTarget*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::Invert() {
    NvThrow(NvErrorCode::km_NotSupported);
}

std::unique_ptr<NvImage> NvImage::NewResizedImage(std::uint32_t /*inWidth*/, std::uint32_t /*inHeight*/,
                                                  NvProgressIndicator* /*inIndicator*/) const {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvImage::Erase() {
    NvThrow(NvErrorCode::km_NotSupported);
}

void NvAssertLayout(const NvRGBLayout& inLayout) {
    const auto [inDestPixelBytes, inDestRedIndex, inDestGreenIndex, inDestBlueIndex] = inLayout;
    NvAssertText(inDestRedIndex < inDestPixelBytes && inDestGreenIndex < inDestPixelBytes &&
                     inDestBlueIndex < inDestPixelBytes,
                 "(inDestRedIndex < inDestPixelBytes) && (inDestGreenIndex < inDestPixelBytes) && "
                 "(inDestBlueIndex < inDestPixelBytes)");
    NvAssertText(inDestRedIndex != inDestGreenIndex && inDestRedIndex != inDestBlueIndex &&
                     inDestGreenIndex != inDestBlueIndex,
                 "(inDestRedIndex != inDestGreenIndex) && (inDestRedIndex != inDestBlueIndex) && "
                 "( inDestGreenIndex != inDestBlueIndex)");
}

namespace {

/** Copies a run of bits from one bit position to another, top bit first. Whole destination bytes are put
 *  together from two source bytes; the ends go bit by bit under a mask. */
void CopyBits(const std::uint8_t* inSrc, std::size_t inSrcBit, std::uint8_t* outDst, std::size_t inDstBit,
              std::size_t inCount) {
    inSrc += inSrcBit / 8;
    outDst += inDstBit / 8;
    std::size_t srcShift = inSrcBit % 8;
    const std::size_t dstShift = inDstBit % 8;

    const auto copyBit = [&](std::size_t inFrom, std::size_t inTo) {
        const unsigned mask = 0x80u >> inTo % 8;
        const bool bit = inSrc[inFrom / 8] & 0x80u >> inFrom % 8;
        std::uint8_t& dst = outDst[inTo / 8];
        dst = static_cast<std::uint8_t>(bit ? dst | mask : dst & ~mask);
    };
    std::size_t done = 0;
    for (; done < inCount && (dstShift + done) % 8 != 0; ++done)
        copyBit(srcShift + done, dstShift + done);

    std::uint8_t* dst = outDst + (dstShift + done) / 8;
    const std::uint8_t* src = inSrc + (srcShift + done) / 8;
    srcShift = (srcShift + done) % 8;
    const std::size_t wholeBytes = (inCount - done) / 8;
    if (srcShift == 0) {
        std::memcpy(dst, src, wholeBytes);
    } else {
        for (std::size_t i = 0; i < wholeBytes; ++i)
            dst[i] = static_cast<std::uint8_t>(src[i] << srcShift | src[i + 1] >> (8 - srcShift));
    }

    const std::size_t rest = (inCount - done) % 8;
    inSrc = src + wholeBytes;
    outDst = dst + wholeBytes;
    for (std::size_t i = 0; i < rest; ++i)
        copyBit(srcShift + i, i);
}

/** What every rectangle copy asks of its arguments.
 *  @param inNumChannels  of the narrower pixels */
void AssertCopy(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, const NvConstPixelBlock& inDst,
                const NvRect& inDstRect, std::uint32_t inNumChannels, std::uint32_t inChannelBitDepth) {
    NvAssertText(inSrc.data && inDst.data, "inSrcData && outDstData");
    NvAssertText(inSrc.rowBytes && inDst.rowBytes, "inSrcRowBytes && inDstRowBytes");
    NvAssert(inNumChannels != 0);
    NvAssert(inChannelBitDepth == 1 || inChannelBitDepth == 8 || inChannelBitDepth == 16);
    NvAssert((inSrcRect.bottom > inSrcRect.top) && (inSrcRect.right > inSrcRect.left));
    NvAssert((inDstRect.bottom > inDstRect.top) && (inDstRect.right > inDstRect.left));
    NvAssert((inSrcRect.right - inSrcRect.left) == (inDstRect.right - inDstRect.left));
    NvAssert((inSrcRect.bottom - inSrcRect.top) == (inDstRect.bottom - inDstRect.top));
}

/** Some channels of every pixel from a point of a block on. */
template <typename Byte>
struct Channels {
    Byte* data; // the first channel of the pixel at the point
    std::uint32_t rowBytes;
    std::size_t pixelBytes;
};

/** The channels from inIndex on, from a rectangle's top left pixel on. */
template <typename Block>
auto ChannelsAt(const Block& inBlock, const NvRect& inRect, std::size_t inIndex, std::size_t inChannelBytes) {
    const std::size_t pixelBytes = inBlock.channels * inChannelBytes;
    auto* const first = inBlock.data + static_cast<std::size_t>(inRect.top) * inBlock.rowBytes +
                        static_cast<std::size_t>(inRect.left) * pixelBytes + inIndex * inChannelBytes;
    return Channels<std::remove_pointer_t<decltype(inBlock.data)>>{first, inBlock.rowBytes, pixelBytes};
}

/** Copies inRunBytes of every pixel of a rectangle to pixels of another size. */
void CopyRuns(Channels<const std::uint8_t> inSrc, Channels<std::uint8_t> inDst, const NvRect& inRect,
              std::size_t inRunBytes) {
    const std::int32_t theWidth = inRect.Width();
    const std::int32_t theHeight = inRect.Height();
    NvAssert(theWidth && theHeight);
    for (std::int32_t y = 0; y < theHeight; ++y) {
        const std::uint8_t* src = inSrc.data;
        std::uint8_t* dst = inDst.data;
        for (std::int32_t x = 0; x < theWidth; ++x) {
            std::copy_n(src, inRunBytes, dst);
            src += inSrc.pixelBytes;
            dst += inDst.pixelBytes;
        }
        inSrc.data += inSrc.rowBytes;
        inDst.data += inDst.rowBytes;
    }
}

} // namespace

void NvCopyRect(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, const NvPixelBlock& inDst,
                const NvRect& inDstRect, std::uint32_t inChannelBitDepth) {
    AssertCopy(inSrc, inSrcRect, inDst, inDstRect, inSrc.channels, inChannelBitDepth);
    NvAssert(inSrc.channels == inDst.channels);
    const std::size_t pixelBits = std::size_t{inSrc.channels} * inChannelBitDepth;
    const std::size_t srcBit = static_cast<std::size_t>(inSrcRect.left) * pixelBits;
    const std::size_t dstBit = static_cast<std::size_t>(inDstRect.left) * pixelBits;
    const std::size_t rowBits = static_cast<std::size_t>(inSrcRect.Width()) * pixelBits;
    const std::uint8_t* src = inSrc.data + static_cast<std::size_t>(inSrcRect.top) * inSrc.rowBytes;
    std::uint8_t* dst = inDst.data + static_cast<std::size_t>(inDstRect.top) * inDst.rowBytes;
    for (std::int32_t row = 0; row < inSrcRect.Height(); ++row) {
        CopyBits(src, srcBit, dst, dstBit, rowBits);
        src += inSrc.rowBytes;
        dst += inDst.rowBytes;
    }
}

void NvCopyIntoChannels(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, const NvPixelBlock& inDst,
                        const NvRect& inDstRect, std::uint32_t inDstIndex, std::uint32_t inChannelBitDepth) {
    AssertCopy(inSrc, inSrcRect, inDst, inDstRect, inSrc.channels, inChannelBitDepth);
    NvAssertText((inSrc.channels + inDstIndex) <= inDst.channels,
                 "(inSrcChannels + inDstIndex) <= inDstChannels");
    const std::size_t channelBytes = inChannelBitDepth / 8;
    NvAssert(channelBytes);
    CopyRuns(ChannelsAt(inSrc, inSrcRect, 0, channelBytes),
             ChannelsAt(inDst, inDstRect, inDstIndex, channelBytes), inSrcRect,
             inSrc.channels * channelBytes);
}

void NvCopyFromChannels(const NvConstPixelBlock& inSrc, const NvRect& inSrcRect, std::uint32_t inSrcIndex,
                        const NvPixelBlock& inDst, const NvRect& inDstRect, std::uint32_t inChannelBitDepth) {
    AssertCopy(inSrc, inSrcRect, inDst, inDstRect, inDst.channels, inChannelBitDepth);
    NvAssertText((inDst.channels + inSrcIndex) <= inSrc.channels,
                 "(inDstChannels + inSrcIndex) <= inSrcChannels");
    const std::size_t channelBytes = inChannelBitDepth / 8;
    NvAssert(channelBytes);
    CopyRuns(ChannelsAt(inSrc, inSrcRect, inSrcIndex, channelBytes),
             ChannelsAt(inDst, inDstRect, 0, channelBytes), inSrcRect, inDst.channels * channelBytes);
}

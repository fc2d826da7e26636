#include "nvcode2/gif/nvpackedframe.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <utility>

#include "nvcode2/gif/nvlzwstringtable.h"

namespace {

constexpr std::uint32_t km_PixelBits = 8;
constexpr std::uint32_t km_Roots = 1U << km_PixelBits;
constexpr std::uint32_t km_Capacity = NvLZWStringTable::km_MaxCodes - km_Roots; // strings of a table

/** A part of the pixels unpacked so far. */
struct Piece {
    std::uint32_t mStart;
    std::uint32_t mLength;
};

/** The transparent index if no drawn pixel has it, otherwise the lowest that none has; 256 when there is
 * none.
 */
std::size_t FindFreeIndex(const NvGIFFrameInfo& inInfo, const NvHistogram& inHistogram) {
    if (inInfo.mHasTransparency && inHistogram[inInfo.mTransparentIndex] == 0)
        return inInfo.mTransparentIndex;
    bool isFound = false;
    return NvIndexedImage::FindUnusedColor(inHistogram.data(), 256, isFound);
}

} // namespace

NvPackedFrame::NvPackedFrame(std::unique_ptr<NvGIFFrame> inFrame, NvLZWStringTable& ioStrings)
    : mInfo(std::make_unique<NvGIFFrameInfo>(inFrame->GetInfo())),
      mColorTable(inFrame->GetImage().GetColorTable()),
      mIsFullyDrawn(inFrame->IsFullyDrawn()) {
    if (mColorTable.GetSize() > 0)
        inFrame->GetImage().BuildMaskedHistogram(mHistogram.data(), &inFrame->GetMask());
    const std::size_t undrawn = FindFreeIndex(*mInfo, mHistogram);
    const bool canPack = mIsFullyDrawn || undrawn < mHistogram.size();
    if (!mIsFullyDrawn && canPack) {
        mUndrawnIndex = static_cast<std::uint8_t>(undrawn);
        inFrame->SetUndrawnPixels(mUndrawnIndex);
    }
    const std::size_t count = std::size_t{inFrame->GetWidth()} * inFrame->GetHeight();
    const std::size_t worthwhile = (count + count / 8) / sizeof(mCodes[0]); // with the mask
    {
        const NvConstPixelLock pixels(inFrame->GetImage());
        Pack(pixels.Row(0), count, canPack ? worthwhile : 0, ioStrings);
    }
    if (mCodes.size() < mCodeCount) {
        mCodes = {};
        mWhole = std::move(inFrame);
    }
    mCodes.shrink_to_fit();
}

bool NvPackedFrame::HasFewCodes() const {
    return !mWhole && mCodeCount <= km_Capacity - 2 && mInfo->mInterlaced == 0; // clear and end code
}

std::uint64_t NvPackedFrame::GetMemory() const {
    const std::uint64_t pixels = mWhole ? std::uint64_t{mWhole->GetWidth()} * mWhole->GetHeight() : 0;
    return sizeof(*this) + sizeof(*mInfo) + mCodes.capacity() * sizeof(mCodes[0]) + pixels + pixels / 8;
}

std::unique_ptr<NvGIFFrame> NvPackedFrame::Unpack() const {
    NvIndexMap same;
    std::iota(same.begin(), same.end(), std::uint8_t{0});
    return Unpack(same, mColorTable, mUndrawnIndex);
}

std::unique_ptr<NvGIFFrame> NvPackedFrame::Unpack(const NvIndexMap& inMap, const NvColorTable& inTable,
                                                  std::uint8_t inUndrawnIndex) const {
    if (mWhole)
        return CopyWhole(inMap, inTable, inUndrawnIndex);
    NvIndexMap map = inMap;
    if (!mIsFullyDrawn)
        map[mUndrawnIndex] = inUndrawnIndex;
    NvIndexedImage image(mInfo->mWidth, mInfo->mHeight, inTable);
    {
        const NvPixelLock pixels(image);
        UnpackTo(pixels.Row(0), map);
    }
    NvBitmapImage mask =
        mIsFullyDrawn ? NvBitmapImage(mInfo->mWidth, mInfo->mHeight, 0, 1) : image.MakeMask(inUndrawnIndex);
    return std::make_unique<NvGIFFrame>(std::move(image), std::move(mask),
                                        std::make_unique<NvGIFFrameInfo>(*mInfo));
}

std::unique_ptr<NvGIFFrame> NvPackedFrame::CopyWhole(const NvIndexMap& inMap, const NvColorTable& inTable,
                                                     std::uint8_t inUndrawnIndex) const {
    std::unique_ptr<NvGIFFrame> frame = mWhole->Copy();
    NvQuantRemap(frame->GetImage(), inMap, inTable);
    if (!mIsFullyDrawn)
        frame->SetUndrawnPixels(inUndrawnIndex);
    return frame;
}

/** Counts the codes of pixels, and keeps the first ones. */
void NvPackedFrame::Pack(const std::uint8_t* inPixels, std::size_t inCount, std::size_t inMostKept,
                         NvLZWStringTable& ioStrings) {
    ioStrings.Clear();
    std::uint32_t prefix = inPixels[0];
    std::uint64_t codes = 0;
    for (std::size_t next = 1; next < inCount;) {
        const std::uint32_t pixel = inPixels[next];
        if (const std::uint32_t code = ioStrings.Find(prefix, pixel)) {
            prefix = code;
            ++next;
            continue;
        }
        if (codes++ < inMostKept)
            mCodes.push_back(static_cast<std::uint16_t>(prefix));
        ioStrings.Add(prefix, pixel, km_Roots + ioStrings.GetCount());
        if (ioStrings.GetCount() == km_Capacity)
            ioStrings.Clear();
        next += ioStrings.FindRun(inPixels + next, static_cast<std::uint32_t>(inCount - next), prefix);
    }
    if (codes < inMostKept)
        mCodes.push_back(static_cast<std::uint16_t>(prefix));
    mCodeCount = codes + 1;
}

// A string is copied from where it was unpacked when it was added. Its last pixel may be the first one of the
// copy.
void NvPackedFrame::UnpackTo(std::uint8_t* outPixels, const NvIndexMap& inMap) const {
    std::array<Piece, km_Capacity> strings;
    std::uint32_t count = 0; // codes since the table was empty
    Piece piece{0, 0};
    for (const std::uint16_t code : mCodes) {
        std::uint8_t* const out = outPixels + piece.mStart + piece.mLength;
        if (count > 0)
            strings[count - 1] = {piece.mStart, piece.mLength + 1};
        piece = {piece.mStart + piece.mLength, 1};
        if (code < km_Roots) {
            *out = inMap[code];
        } else {
            const Piece& string = strings[code - km_Roots];
            piece.mLength = string.mLength;
            std::memcpy(out, outPixels + string.mStart, string.mLength - 1);
            out[string.mLength - 1] = outPixels[string.mStart + string.mLength - 1];
        }
        if (++count == km_Capacity)
            count = 0;
    }
}

#include "win/optimizer/frames/pvflatten.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "nvcode2/base/nvbytes.h"
#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvquantoctree.h"

namespace {

using Pixel = PvFlattener::Pixel;

/** The colours that a frame draws with, found by their pixels. */
class DrawnColours {
public:
    struct Entry {
        Pixel mColour = 0;
        std::uint64_t mPixels = 0;
        std::uint8_t mIndex = 0; // in the frame's table
    };

    /** Entries move when a colour is new. */
    Entry& Find(Pixel inColour) {
        if (2 * mEntries.size() >= mSlots.size())
            Grow();
        std::uint32_t& slot = SlotOf(inColour);
        if (slot == 0) {
            mEntries.push_back({inColour});
            slot = static_cast<std::uint32_t>(mEntries.size());
        }
        return mEntries[slot - 1];
    }

    void Add(Pixel inColour, std::uint32_t inPixels) {
        Find(inColour).mPixels += inPixels;
        mPixels += inPixels;
    }

    std::size_t GetCount() const { return mEntries.size(); }
    std::uint64_t GetPixels() const { return mPixels; }

    /** Gives the colours indices of a table of inLimit entries at most, quantized if there are more.
     *  @param ioErrors  takes what that makes of them */
    NvColorTable MakeTable(std::uint32_t inLimit, PvColourErrors& ioErrors);

private:
    // Multiplied by the golden ratio, after D. E. Knuth, "The Art of Computer Programming", volume 3, 6.4.
    std::uint32_t& SlotOf(Pixel inColour) {
        const std::size_t mask = mSlots.size() - 1;
        std::size_t slot = (inColour * 0x9E3779B1U >> 12) & mask;
        while (mSlots[slot] != 0 && mEntries[mSlots[slot] - 1].mColour != inColour)
            slot = (slot + 1) & mask;
        return mSlots[slot];
    }

    void Grow() {
        mSlots.assign(std::max<std::size_t>(1024, 2 * mSlots.size()), 0);
        for (std::uint32_t i = 0; i < mEntries.size(); ++i)
            SlotOf(mEntries[i].mColour) = i + 1;
    }

    std::vector<Entry> mEntries;       // as they were met
    std::vector<std::uint32_t> mSlots; // a hash table of entry numbers from 1 on, 0: free
    std::uint64_t mPixels = 0;
};

NvColorTable DrawnColours::MakeTable(std::uint32_t inLimit, PvColourErrors& ioErrors) {
    if (mEntries.size() <= inLimit) {
        NvColorTable table(static_cast<std::uint32_t>(std::max<std::size_t>(mEntries.size(), 1)));
        for (std::uint32_t i = 0; i < mEntries.size(); ++i) {
            table.SetColor(i, NvUnpackColor(mEntries[i].mColour));
            mEntries[i].mIndex = static_cast<std::uint8_t>(i);
        }
        return table;
    }
    NvQuantOctree octree(inLimit);
    for (const Entry& entry : mEntries)
        octree.AddColor(NvUnpackColor(entry.mColour), entry.mPixels);
    NvColorTable table = octree.MakeTable();
    for (Entry& entry : mEntries) {
        const std::uint32_t index = table.FindClosestColor(entry.mColour & 0xFFFFFF, -1);
        entry.mIndex = static_cast<std::uint8_t>(index);
        ioErrors.Add(entry.mColour, NvPackColor(table.GetColor(index)));
    }
    return table;
}

/** Calls inVisit(first, end) for every run of drawn pixels of one colour. */
template <typename Visitor>
void ForEachColourRun(const Pixel* inPixels, const std::uint8_t* inIsDrawn, std::uint32_t inCount,
                      Visitor inVisit) {
    for (std::uint32_t x = 0; x < inCount;) {
        const std::uint32_t first = x++;
        if (!inIsDrawn[first])
            continue;
        while (x < inCount && inIsDrawn[x] && inPixels[x] == inPixels[first])
            ++x;
        inVisit(first, x);
    }
}

std::size_t AreaOf(const NvRect& inRect) {
    return static_cast<std::size_t>(inRect.Width()) * static_cast<std::size_t>(inRect.Height());
}

NvRect UnionOfTwo(const NvRect& inFirst, const NvRect& inSecond) {
    if (inFirst.IsEmpty())
        return inSecond;
    return inSecond.IsEmpty() ? inFirst : NvUnionRect(inFirst, inSecond);
}

NvGIFPlayer::Range SideOf(std::int32_t inFirst, std::int32_t inEnd) {
    return {static_cast<std::uint32_t>(inFirst), static_cast<std::uint32_t>(inEnd)};
}

/** Grows a rectangle by the columns of a row for which inIsIn says so; it counts from the first of them. */
template <typename Predicate>
void AddRow(NvRect& ioRect, std::uint32_t inY, const NvGIFPlayer::Columns& inColumns, Predicate inIsIn) {
    std::uint32_t first = 0;
    std::uint32_t end = inColumns.mEnd - inColumns.mFirst;
    while (first < end && !inIsIn(first))
        ++first;
    if (first == end)
        return;
    while (!inIsIn(end - 1))
        --end;
    const auto left = static_cast<std::int32_t>(inColumns.mFirst);
    const auto y = static_cast<std::int32_t>(inY);
    ioRect = UnionOfTwo(
        ioRect, {left + static_cast<std::int32_t>(first), y, left + static_cast<std::int32_t>(end), y + 1});
}

void PackMaskRow(const std::uint8_t* inIsDrawn, std::uint32_t inWidth, std::uint8_t* outBits) {
    std::uint32_t x = 0;
    for (; x + 8 <= inWidth; x += 8)
        outBits[x / 8] = NvBitsOfEight(inIsDrawn + x, 1);
    for (; x < inWidth; ++x)
        if (inIsDrawn[x])
            outBits[x / 8] = static_cast<std::uint8_t>(outBits[x / 8] | (0x80U >> x % 8));
}

/** A part of what is displayed, on its way to becoming a frame. */
class Part {
public:
    /** @param inPixels     the part's first
     *  @param inRowLength  pixels from one row to the next
     *  @param inRect       on the screen */
    Part(const Pixel* inPixels, std::size_t inRowLength, const NvRect& inRect)
        : mPixels(inPixels),
          mRowLength(inRowLength),
          mRect(inRect),
          mWidth(static_cast<std::uint32_t>(inRect.Width())),
          mHeight(static_cast<std::uint32_t>(inRect.Height())),
          mIsDrawn(AreaOf(inRect), 0) {}

    /** Has the frame draw pixels of a rectangle of the screen inside the part.
     *  @param inIsDrawn  1 or 0 for each, row-major */
    void Draw(const NvRect& inRect, const std::vector<std::uint8_t>& inIsDrawn) {
        const auto width = static_cast<std::ptrdiff_t>(inRect.Width());
        for (std::int32_t y = 0; y < inRect.Height(); ++y)
            std::copy_n(inIsDrawn.begin() + y * width, width,
                        DrawnRow(static_cast<std::uint32_t>(inRect.top - mRect.top + y)) +
                            (inRect.left - mRect.left));
    }

    /** @param ioErrors  takes what quantizing makes of colours */
    std::unique_ptr<NvGIFFrame> MakeFrame(std::unique_ptr<NvGIFFrameInfo> inInfo, PvColourErrors& ioErrors) {
        DrawnColours colours = ChooseColours();
        const NvColorTable table = colours.MakeTable(TableLimit(colours), ioErrors);
        NvIndexedImage image(mWidth, mHeight, table);
        NvBitmapImage mask(mWidth, mHeight);
        Paint(colours, image, mask);
        inInfo->mLeft = static_cast<std::uint16_t>(mRect.left);
        inInfo->mTop = static_cast<std::uint16_t>(mRect.top);
        inInfo->mWidth = static_cast<std::uint16_t>(mWidth);
        inInfo->mHeight = static_cast<std::uint16_t>(mHeight);
        inInfo->mHasLocalTable = 1;
        inInfo->mColorTable = table;
        auto frame = std::make_unique<NvGIFFrame>(std::move(image), std::move(mask), std::move(inInfo));
        frame->UpdateTransparency(nullptr, 256);
        return frame;
    }

private:
    const Pixel* Row(std::uint32_t inY) const { return mPixels + inY * mRowLength; }
    std::uint8_t* DrawnRow(std::uint32_t inY) { return mIsDrawn.data() + std::size_t{inY} * mWidth; }

    // Where a table holds no index for what is not drawn besides the colours that are, drawing everything may
    // do without one.
    DrawnColours ChooseColours() {
        DrawnColours colours = CountColours();
        if (colours.GetCount() <= TableLimit(colours))
            return colours;
        std::vector<std::uint8_t> isDrawn = mIsDrawn;
        for (std::uint32_t y = 0; y < mHeight; ++y)
            std::transform(Row(y), Row(y) + mWidth, DrawnRow(y),
                           [](Pixel inPixel) { return static_cast<std::uint8_t>(inPixel >> 31); });
        DrawnColours all = CountColours();
        if (all.GetCount() <= TableLimit(all))
            return all;
        mIsDrawn.swap(isDrawn);
        return colours;
    }

    DrawnColours CountColours() {
        DrawnColours colours;
        for (std::uint32_t y = 0; y < mHeight; ++y)
            ForEachColourRun(Row(y), DrawnRow(y), mWidth, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
                colours.Add(Row(y)[inFirst], inEnd - inFirst);
            });
        return colours;
    }

    /** Entries that the table may have; one more is for pixels not drawn. */
    std::uint32_t TableLimit(const DrawnColours& inColours) const {
        return inColours.GetPixels() == mIsDrawn.size() ? 256 : 255;
    }

    void Paint(DrawnColours& ioColours, NvIndexedImage& outImage, NvBitmapImage& outMask) {
        const NvPixelLock pixels(outImage);
        const NvPixelLock bits(outMask);
        for (std::uint32_t y = 0; y < mHeight; ++y) {
            std::uint8_t* indices = pixels.Row(y);
            ForEachColourRun(Row(y), DrawnRow(y), mWidth, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
                std::fill(indices + inFirst, indices + inEnd, ioColours.Find(Row(y)[inFirst]).mIndex);
            });
            PackMaskRow(DrawnRow(y), mWidth, bits.Row(y));
        }
    }

    const Pixel* mPixels;
    std::size_t mRowLength;
    NvRect mRect;
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::vector<std::uint8_t> mIsDrawn; // 1 or 0, row-major
};

} // namespace

PvFlattener::PvFlattener(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight)
    : mPlayer(inScreenWidth, inScreenHeight),
      mShown(std::size_t{inScreenWidth} * inScreenHeight, 0),
      mNow(inScreenWidth) {}

std::unique_ptr<NvGIFFrame> PvFlattener::Flatten(const NvGIFFrame& inFrame) {
    mPlayer.ShowFrame(inFrame);
    std::unique_ptr<NvGIFFrame> last;
    NvRect cleared;
    if (mInfo) {
        const NvRect vanished = FindVanished();
        last = MakeFrame(vanished);
        if (!vanished.IsEmpty()) {
            cleared = last->GetScreenRect();
            Clear(cleared);
        }
    }
    mInfo = std::make_unique<NvGIFFrameInfo>(inFrame.GetInfo());
    FindChanges(cleared);
    return last;
}

std::unique_ptr<NvGIFFrame> PvFlattener::Finish() {
    return MakeFrame(NvRect{});
}

/** Calls inVisit(y, columns) for all that the frame in hand may have changed, or clearing the last one has.
 */
template <typename Visitor>
void PvFlattener::ForEachTouchedRow(const NvRect& inCleared, Visitor inVisit) {
    const auto [first, second] = mPlayer.GetChangedRows();
    const Columns clearedRows = SideOf(inCleared.top, inCleared.bottom);
    NvGIFPlayer::ForEachRow(std::array{first, second, clearedRows}, [&](std::uint32_t inY) {
        Columns columns = mPlayer.GetChangedColumns(inY);
        if (clearedRows.mFirst <= inY && inY < clearedRows.mEnd)
            columns.Add(SideOf(inCleared.left, inCleared.right));
        if (!columns.IsEmpty())
            inVisit(inY, columns);
    });
}

/** What is displayed after the frame in hand, in some columns of a row. */
const PvFlattener::Pixel* PvFlattener::ReadNow(std::uint32_t inY, const Columns& inColumns) {
    mPlayer.Read(inY, inColumns, mNow.data());
    return mNow.data();
}

/** The rectangle of all that the last frame left covered and the one in hand does not. */
NvRect PvFlattener::FindVanished() {
    NvRect vanished;
    ForEachTouchedRow(NvRect{}, [&](std::uint32_t inY, const Columns& inColumns) {
        const Pixel* shown = ShownRow(inY) + inColumns.mFirst;
        const Pixel* now = ReadNow(inY, inColumns);
        AddRow(vanished, inY, inColumns, [&](std::uint32_t inX) { return shown[inX] != 0 && now[inX] == 0; });
    });
    return vanished;
}

/** Finds what the frame in hand changes of what is displayed, and takes it over. */
void PvFlattener::FindChanges(const NvRect& inCleared) {
    mRect = NvRect{};
    ForEachTouchedRow(inCleared, [&](std::uint32_t inY, const Columns& inColumns) {
        const Pixel* shown = ShownRow(inY) + inColumns.mFirst;
        const Pixel* now = ReadNow(inY, inColumns);
        AddRow(mRect, inY, inColumns, [&](std::uint32_t inX) { return shown[inX] != now[inX]; });
    });
    mIsDrawn.assign(mRect.IsEmpty() ? 0 : AreaOf(mRect), 0);
    const Columns columns = SideOf(mRect.left, mRect.right);
    std::uint8_t* isDrawn = mIsDrawn.data();
    for (std::int32_t y = mRect.top; y < mRect.bottom; ++y) {
        Pixel* shown = ShownRow(static_cast<std::uint32_t>(y)) + columns.mFirst;
        const Pixel* now = ReadNow(static_cast<std::uint32_t>(y), columns);
        for (std::int32_t x = 0; x < mRect.Width(); ++x)
            *isDrawn++ = shown[x] != now[x] ? 1 : 0;
        std::copy_n(now, mRect.Width(), shown);
    }
}

void PvFlattener::Clear(const NvRect& inRect) {
    for (std::int32_t y = inRect.top; y < inRect.bottom; ++y)
        std::fill_n(ShownRow(static_cast<std::uint32_t>(y)) + inRect.left, inRect.Width(), Pixel{0});
}

/** Makes the last frame of what is displayed.
 *  @param inVanished  what will be gone of it when the next one is displayed */
std::unique_ptr<NvGIFFrame> PvFlattener::MakeFrame(const NvRect& inVanished) {
    NvRect rect = UnionOfTwo(mRect, inVanished);
    if (rect.IsEmpty())
        rect = {mInfo->mLeft, mInfo->mTop, mInfo->mLeft + 1, mInfo->mTop + 1};
    Part part(ShownRow(static_cast<std::uint32_t>(rect.top)) + rect.left, mPlayer.GetScreenWidth(), rect);
    part.Draw(mRect, mIsDrawn);
    std::unique_ptr<NvGIFFrame> frame = part.MakeFrame(std::move(mInfo), mErrors);
    frame->GetInfo().mDisposal =
        inVanished.IsEmpty() ? NvGIFFrameInfo::km_DisposeLeave : NvGIFFrameInfo::km_DisposeClear;
    return frame;
}

#include "win/sheet/pvcontactsheet.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/image/nvimageconverter.h"
#include "nvcode2/quant/nvquantoctree.h"
#include "wnatom/wnsystem.h"

namespace {

// All lengths are pixels.
constexpr std::uint32_t km_Box = 128;   // the side of a thumbnail's place
constexpr std::uint32_t km_Padding = 6; // between the places, and between them and the edge of their card
constexpr std::uint32_t km_Gap = 8;     // between the files' cards, and between them and the sheet's edge

constexpr NvColor km_Paper{255, 255, 255};
constexpr NvColor km_Card{238, 238, 238};
constexpr NvColor km_Outline{173, 173, 173};

/** What inCount items and the gaps around each of them take. */
constexpr std::uint64_t LengthOf(std::uint64_t inCount, std::uint32_t inLength, std::uint32_t inGap) {
    return inGap + inCount * (inLength + inGap);
}

/** The sheet of inFiles files, if every row of cards were as tall as rows can get. */
class Grid {
public:
    explicit Grid(std::uint64_t inFiles, std::uint32_t inPlaces)
        : mCardWidth(static_cast<std::uint32_t>(LengthOf(inPlaces, km_Box, km_Padding))) {
        do {
            ++mColumns;
            mRows = (inFiles + mColumns - 1) / mColumns;
        } while (GetHeight() > GetWidth() + GetWidth() / 2);
    }

    std::uint64_t GetColumns() const { return mColumns; }
    std::uint32_t GetCardWidth() const { return mCardWidth; }
    std::uint64_t GetWidth() const { return LengthOf(mColumns, mCardWidth, km_Gap); }
    std::uint64_t GetHeight() const { return LengthOf(mRows, km_Box + 2 * km_Padding, km_Gap); }

private:
    std::uint32_t mCardWidth;
    std::uint64_t mColumns = 0;
    std::uint64_t mRows = 0;
};

NvRect MakeRect(std::uint32_t inLeft, std::uint32_t inTop, std::uint32_t inWidth, std::uint32_t inHeight) {
    return {static_cast<std::int32_t>(inLeft), static_cast<std::int32_t>(inTop),
            static_cast<std::int32_t>(inLeft + inWidth), static_cast<std::int32_t>(inTop + inHeight)};
}

void Fill(NvRGBImage& ioImage, const NvRect& inRect, NvColor inColor) {
    const NvPixelLock pixels(ioImage);
    for (std::int32_t y = inRect.top; y < inRect.bottom; ++y) {
        std::uint8_t* pixel = pixels.Row(static_cast<std::uint32_t>(y)) +
                              std::size_t{3} * static_cast<std::size_t>(inRect.left);
        for (std::int32_t x = inRect.left; x < inRect.right; ++x, pixel += 3) {
            pixel[0] = inColor.red;
            pixel[1] = inColor.green;
            pixel[2] = inColor.blue;
        }
    }
}

/** Pastes thumbnails, each in the middle of its place on a card and with a thin line around it. */
void MountThumbnails(std::span<const NvRGBImage> inThumbnails, const NvRect& inCard, NvRGBImage& ioPage) {
    std::int32_t middle = inCard.left + static_cast<std::int32_t>(km_Padding + km_Box / 2);
    for (const NvRGBImage& thumbnail : inThumbnails) {
        if (thumbnail.IsAllocated()) {
            const NvRect size = thumbnail.GetBounds();
            const NvPoint point{middle - size.right / 2, (inCard.top + inCard.bottom - size.bottom) / 2};
            Fill(ioPage, {point.h - 1, point.v - 1, point.h + size.right + 1, point.v + size.bottom + 1},
                 km_Outline);
            ioPage.PasteImage(thumbnail, point);
        }
        middle += static_cast<std::int32_t>(km_Box + km_Padding);
    }
}

/** Writes a still GIF. */
void WriteStill(const NvIndexedImage& inImage, const char* inPath) {
    const auto global = NvGIFFile::CreateGlobalInfo();
    global->mColorTable = inImage.GetColorTable();
    global->mHasGlobalTable = 1;
    global->mColorResolution = 8;
    NvGIFFrameInfo info;
    info.mWidth = static_cast<std::uint16_t>(inImage.GetWidth());
    info.mHeight = static_cast<std::uint16_t>(inImage.GetHeight());
    info.mHasLocalTable = 0;
    info.mHasGraphicControl = 0;

    NvGIFFile file;
    file.Open(NvFileLocator(inPath), NvFile::km_WritePerm);
    file.SetScreenSize(inImage.GetWidth(), inImage.GetHeight());
    file.SetNumberOfFrames(1);
    file.SetGlobalInfo(global);
    file.WriteFrame(inImage, info);
    file.Close();
}

} // namespace

PvContactSheet::PvContactSheet(std::uint64_t inMemoryLimit, NvProgressIndicator* inIndicator)
    : mMemoryLimit(inMemoryLimit != 0 ? inMemoryLimit : WnGetUsualMemoryLimit()),
      mIndicator(inIndicator),
      mThumbnail(km_Box, km_Box) {}

void PvContactSheet::AddFile(const char* inPath) {
    try {
        NvGIFFrameReader reader(inPath, WnGetUsualMemoryLimit());
        CheckMemory(reader);
        mFiles.push_back(Play(reader));
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
    for (const NvRGBImage& thumbnail : mFiles.back())
        mPixels += std::uint64_t{thumbnail.GetWidth()} * thumbnail.GetHeight();
}

// Counts all that the sheet will need with this file on it, so that whatever could be added can be written.
void PvContactSheet::CheckMemory(const NvGIFFrameReader& inReader) const {
    constexpr std::uint64_t longestSide = 0xFFFF;
    const Grid grid(mFiles.size() + 1, km_Places);
    const NvRect size = mThumbnail.Fit(inReader.GetScreenWidth(), inReader.GetScreenHeight());
    const std::uint64_t thumbnails =
        mPixels + std::uint64_t{km_Places} * static_cast<std::uint32_t>(size.right * size.bottom);
    const std::uint64_t needed = inReader.EstimatePlayMemory() + 3 * thumbnails +
                                 4 * grid.GetWidth() * grid.GetHeight() +
                                 NvQuantOctree::EstimateMemory(thumbnails);
    if (needed > mMemoryLimit || std::max(grid.GetWidth(), grid.GetHeight()) > longestSide)
        NvThrow(NvErrorCode::km_OutOfMemory);
}

PvContactSheet::File PvContactSheet::Play(NvGIFFrameReader& ioReader) const {
    const std::uint32_t count = ioReader.GetFrameCount();
    const std::array<std::uint32_t, km_Places> shown = {0, (count - 1) / 2, count - 1};
    NvGIFPlayer player(ioReader.GetScreenWidth(), ioReader.GetScreenHeight());
    File file;
    for (std::uint32_t i = 0; i < count; ++i) {
        ioReader.PlayFrame(i, player);
        const auto place = static_cast<std::size_t>(std::ranges::find(shown, i) - shown.begin());
        if (place < km_Places)
            file[place] = mThumbnail.Render(player, mIndicator);
        NvReportProgress(mIndicator, i + 1, count);
    }
    return file;
}

std::uint32_t PvContactSheet::GetColumnCount() const {
    return static_cast<std::uint32_t>(Grid(mFiles.size(), km_Places).GetColumns());
}

std::vector<PvContactSheet::Row> PvContactSheet::MakeRows() const {
    const std::size_t columns = GetColumnCount();
    std::vector<Row> rows;
    for (std::size_t first = 0; first < mFiles.size(); first += columns) {
        const std::span files(mFiles.data() + first, std::min(columns, mFiles.size() - first));
        std::uint32_t tallest = 0;
        for (const File& file : files)
            tallest = std::max(tallest, file[0].GetHeight());
        rows.push_back({files, tallest + 2 * km_Padding});
    }
    return rows;
}

NvRGBImage PvContactSheet::MakePage() const {
    const Grid grid(mFiles.size(), km_Places);
    const std::vector<Row> rows = MakeRows();
    std::uint32_t height = km_Gap;
    for (const Row& row : rows)
        height += row.mHeight + km_Gap;
    NvRGBImage page(static_cast<std::uint32_t>(grid.GetWidth()), height);
    Fill(page, page.GetBounds(), km_Paper);

    std::uint32_t top = km_Gap;
    for (const Row& row : rows) {
        std::uint32_t left = km_Gap;
        for (const File& file : row.mFiles) {
            const NvRect card = MakeRect(left, top, grid.GetCardWidth(), row.mHeight);
            Fill(page, card, km_Card);
            MountThumbnails(file, card, page);
            left += grid.GetCardWidth() + km_Gap;
        }
        top += row.mHeight + km_Gap;
    }
    return page;
}

NvIndexedImage PvContactSheet::Quantize(const NvRGBImage& inPage) const {
    NvQuantOctree octree(256);
    const NvConstPixelLock pixels(inPage);
    for (std::uint32_t y = 0; y < inPage.GetHeight(); ++y) {
        const std::uint8_t* const row = pixels.Row(y);
        for (std::size_t x = 0; x < inPage.GetWidth(); ++x)
            octree.AddColor({row[3 * x], row[3 * x + 1], row[3 * x + 2]}, 1);
        NvReportProgress(mIndicator, y + 1, inPage.GetHeight());
    }
    return NvImageConverter(mIndicator).ToIndexed(inPage, octree.MakeTable());
}

void PvContactSheet::Write(const char* inPath) const {
    NvAssert(!mFiles.empty());
    try {
        WriteStill(Quantize(MakePage()), inPath);
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvrealimage.h"

class NvBitmapImage;

/** A palette image: one 8-bit index per pixel, rows without padding, and the colours the indices stand for.
 *
 *  A histogram of it is an array of as many counts as the colour table has entries (at most 256): how many
 *  pixels have that index. Indices beyond the table belong to no picture and are counted nowhere.
 *
 *  Moving is cheap and takes pixels, table and format information along. */
class NvIndexedImage : public NvRealImage {
public:
    /** 0 by 0 pixels, an empty table. */
    NvIndexedImage();
    /** Every pixel 0. */
    NvIndexedImage(std::uint32_t inWidth, std::uint32_t inHeight, const NvColorTable& inTable);
    NvIndexedImage(NvIndexedImage&& ioImage) noexcept = default;
    NvIndexedImage& operator=(NvIndexedImage&& ioImage) noexcept = default;

    NvColorTable& GetColorTable() { return mColorTable; }
    const NvColorTable& GetColorTable() const { return mColorTable; }
    /** The index that Erase writes; 0 unless set. */
    std::uint8_t GetFillIndex() const { return static_cast<std::uint8_t>(mFillIndex); }
    void SetFillIndex(std::uint8_t inFillIndex) { mFillIndex = inFillIndex; }

    std::unique_ptr<NvImage> Clone() const override;
    /** Each index through the table; one beyond it reads as black. */
    void ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                 const NvRGBLayout& inLayout) const override;
    /** Keeps the colour table and the fill index; every pixel is 0. */
    std::unique_ptr<NvImage> NewBlankImage(const NvRect& inRect) const override;
    void CopyFrom(const NvImage& inImage) override;
    /** Sets every pixel to the fill index. Precondition: allocated. */
    void Erase() override;
    /** The background is the fill index. */
    bool FindContentBounds(NvRect& outBounds) const override;
    /** Rewrites the pixels and takes the table. Preconditions: both non-null, at least one new entry. */
    void MapToTable(const NvColorTable* inTablePtr, const std::uint8_t* inInvMap) override;
    /** Averages colours and maps them back to the table, which must not be empty. No caller yet in the
     *  program, whose thumbnails are made of whole canvases. */
    std::unique_ptr<NvImage> NewResizedImage(std::uint32_t inWidth, std::uint32_t inHeight,
                                             NvProgressIndicator* inIndicator) const override;
    /** Makes the mask of the pixels whose index is another than inIndex; with the transparent index of a
     *  GIF frame these are the pixels it draws. */
    virtual NvBitmapImage MakeMask(std::uint8_t inIndex) const;

    /** The index at column inH, row inV. Preconditions: inside the image, not locked. For single pixels;
     *  loops lock the image. No caller yet in the program, which has no single pixels. */
    std::uint8_t GetPixel(std::uint32_t inH, std::uint32_t inV) const;

    /** The highest index of any pixel, 0 for an image without pixels. Precondition: not locked. */
    std::uint8_t GetHighestIndex() const;
    /** The same of the pixels that have another index than inIndex. */
    std::uint8_t GetHighestIndexBut(std::uint8_t inIndex) const;

    /** Counts every pixel. Raises 27 for a null histogram, 21 when the image has no pixels or is locked. */
    void BuildHistogram(std::uint32_t* outHistogram) const;
    /** Counts the pixels that the mask, of the same size, has set. A colour that lies only under pixels not
     *  set counts as unused. Preconditions: neither is empty nor locked. Raises 27 for a null argument. */
    void BuildMaskedHistogram(std::uint32_t* outHistogram, const NvBitmapImage* inMask) const;
    /** How many of the counts are not zero. Raises 27 for a null histogram. Precondition: inHistSize. */
    static std::uint32_t CountUsedColors(const std::uint32_t* inHistogram, std::uint32_t inHistSize);
    /** The first index whose count is zero, or inHistSize when outFound comes back false. Raises 27 for a
     *  null histogram. No caller yet in the program, whose frames weigh code widths as well. */
    static std::uint32_t FindUnusedColor(const std::uint32_t* inHistogram, std::uint32_t inHistSize,
                                         bool& outFound);

    /** Picks the entry that can be given up at least cost: pixels times squared distance to the nearest other
     *  entry, in single precision; among equals the one with fewer pixels.
     *
     *  @param ioHistogram   the count of every candidate tried is overwritten
     *  @param inCandidates  only so many of the least used entries are tried; at least 1
     *  @param outSrcIndex   the entry to give up
     *  @param outDstIndex   the entry that replaces it (see ReplaceIndex); also the result
     *  Precondition: at least two entries. */
    std::uint32_t ChooseColorToMerge(std::uint32_t* ioHistogram, std::uint32_t inCandidates,
                                     std::uint32_t& outSrcIndex, std::uint32_t& outDstIndex) const;
    /** Gives every pixel of one index another; the table stays, the first entry is then unused.
     *  Preconditions: different, both in the table. */
    void ReplaceIndex(std::uint32_t inSrcIndex, std::uint32_t inDstIndex);
    /** Rewrites every pixel p as inMap[p]; 256 bytes. Raises 27 for a null map. */
    void RemapIndices(const std::uint8_t* inMap);

    /** The table without repeated colours and without entries that no pixel uses, and where each entry
     *  went. Image and table stay as they are.
     *
     *  A repeated colour whose first occurrence is unused makes indices collide: the first occurrence is
     *  dropped from the numbering before the repetition revives it. Callers avoid that by giving the
     *  pixels of repeated colours to the first occurrence, as RemoveUnusedColors does.
     *
     *  @param inHistogram  a count per entry
     *  @param outMap       GetColorTable().GetSize() bytes: the new index of each entry
     *  Precondition: 1 to 256 entries. Raises 27 for a null argument. */
    NvColorTable CompactTable(const std::uint32_t* inHistogram, std::uint8_t* outMap) const;
    /** Drops repeated and unused colours from the table, the others keeping their order, and rewrites the
     *  pixels. The picture is unchanged. Raises 21 when the image has no pixels or is locked. */
    void RemoveUnusedColors();
    /** RemoveUnusedColors, then gives up every colour nearer than inTolerance to one before it that is
     *  kept. A group is shown in its first member's colour; tolerance 0 merges nothing.
     *  No caller in the program, which merges into the mean of a group instead; kept for quick reductions. */
    void MergeSimilarColors(std::uint32_t inTolerance);

private:
    NvColorTable mColorTable;
    std::uint32_t mFillIndex = 0; // 0 to 255
};

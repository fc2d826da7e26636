#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvrealimage.h"

class NvBitmapImage;

/** Pixels per index. */
using NvHistogram = std::array<std::uint32_t, 256>;

/** The new index of every old one. */
using NvIndexMap = std::array<std::uint8_t, 256>;

/** A palette image: one 8-bit index per pixel, rows without padding, and the colours the indices stand for.
 *
 *  Histograms of it hold as many counts as the colour table has entries. Pixels whose index lies beyond the
 *  table are not counted.
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
    /** The index that Erase writes; 0 unless set, which nothing here does. */
    std::uint8_t GetFillIndex() const { return static_cast<std::uint8_t>(mFillIndex); }
    void SetFillIndex(std::uint8_t inFillIndex) { mFillIndex = inFillIndex; }

    std::unique_ptr<NvImage> Clone() const override;
    /** What Clone makes, as what it is. */
    NvIndexedImage Copy() const;
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
    /** Averages colours and maps them back to the table, which must not be empty. For single pictures:
     *  thumbnails are made of whole canvases. */
    std::unique_ptr<NvImage> NewResizedImage(std::uint32_t inWidth, std::uint32_t inHeight,
                                             NvProgressIndicator* inIndicator) const override;
    /** The mask of the pixels whose index is not inIndex: with the transparent index of a GIF frame, of
     *  those it draws. */
    virtual NvBitmapImage MakeMask(std::uint8_t inIndex) const;

    /** The index at column inH, row inV. Preconditions: inside the image, not locked. For a pixel here and
     *  there; loops lock the image. */
    std::uint8_t GetPixel(std::uint32_t inH, std::uint32_t inV) const;

    /** The highest index of any pixel, 0 for an image without pixels. */
    std::uint8_t GetHighestIndex() const;
    /** The same, pixels of index inIndex left out. */
    std::uint8_t GetHighestIndexBut(std::uint8_t inIndex) const;

    /** Counts every pixel. Raises 27 for a null histogram, 21 when the image has no pixels or is locked. */
    void BuildHistogram(std::uint32_t* outHistogram) const;
    /** Counts the pixels that the mask, of the same size, has set. A colour that lies only under pixels not
     *  set counts as unused. Preconditions: neither is empty nor locked. Raises 27 for a null argument. */
    void BuildMaskedHistogram(std::uint32_t* outHistogram, const NvBitmapImage* inMask) const;
    /** How many of the counts are not zero. Raises 27 for a null histogram. Precondition: inHistSize. */
    static std::uint32_t CountUsedColors(const std::uint32_t* inHistogram, std::uint32_t inHistSize);
    /** The first index whose count is zero; inHistSize, and outFound false, when there is none. Raises 27
     *  for a null histogram. */
    static std::uint32_t FindUnusedColor(const std::uint32_t* inHistogram, std::uint32_t inHistSize,
                                         bool& outFound);

    /** Picks the entry that can be given up at least cost: pixels times squared distance to the nearest other
     *  entry, in single precision; among equals the one with fewer pixels.
     *
     *  @param ioHistogram   the count of every candidate tried is overwritten
     *  @param inCandidates  how many of the least used entries are tried
     *  @param outSrcIndex   the entry to give up
     *  @param outDstIndex   the entry that replaces it (see ReplaceIndex); also the result
     *  Raises 27 for a null histogram, an empty table or no candidates. Precondition: at least two entries.
     */
    std::uint32_t ChooseColorToMerge(std::uint32_t* ioHistogram, std::uint32_t inCandidates,
                                     std::uint32_t& outSrcIndex, std::uint32_t& outDstIndex) const;
    /** Gives every pixel of one index another. The table stays; the first of the two entries is then unused.
     *  Preconditions: different, both in the table. Raises 27 for a table of more than 256 entries. */
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
     *  Raises 27 for a null argument or more than 256 entries. Precondition: at least one entry. */
    NvColorTable CompactTable(const std::uint32_t* inHistogram, std::uint8_t* outMap) const;
    /** Drops repeated and unused colours from the table, the others keeping their order, and rewrites the
     *  pixels. The picture is unchanged. Raises 21 when the image has no pixels or is locked, 27 for a table
     *  of more than 256 entries. */
    void RemoveUnusedColors();
    /** RemoveUnusedColors, then gives up every colour nearer than inTolerance to one before it that is
     *  kept. A group is shown in its first member's colour; tolerance 0 merges nothing. For callers in a
     *  hurry: the optimizer shows a group in its mean, and lets the look decide how far groups reach. */
    void MergeSimilarColors(std::uint32_t inTolerance);

private:
    NvColorTable mColorTable;
    std::uint32_t mFillIndex = 0; // 0 to 255
};

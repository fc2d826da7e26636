#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/quant/nvcolorclusters.h"

/** Builds the palette that shows a weighted set of colours with little error.
 *
 *  An octree of eight levels holds one leaf per exact colour; past 131,072 of them it gives up its lowest
 *  level, so that no input makes it grow without end. When there are more leaves than the palette may have
 *  entries, the tree is first thinned to about a thousand, then the leaves are merged two by two; each step
 *  is the one that adds the least squared error, weighted by pixels. With no more colours than entries the
 *  palette holds exactly those.
 *
 *  Same input, same palette, on every platform and in whatever order the colours are added.
 *
 *  After M. Gervautz and W. Purgathofer, "A Simple Method for Color Quantization: Octree Quantization", 1988,
 *  and, for the merging, nvcolorclusters.h. */
class NvQuantOctree {
public:
    /** @param inTableSize  entries the palette may have, 1 to 256 */
    explicit NvQuantOctree(std::uint32_t inTableSize);

    /** Adds pixels of one colour.
     *  @param inWeight  how many; 0 adds nothing */
    void AddColor(NvColor inColor, std::uint64_t inWeight);

    /** Adds every colour of a table with its count.
     *  @param inHistogram  one count per entry of the table */
    void AddHistogram(const NvColorTable& inTable, const std::uint32_t* inHistogram);

    /** The palette, the colour with the most pixels first; empty when nothing was added. */
    NvColorTable MakeTable() const;

    /** Bytes that quantizing so many distinct colours takes at most, MakeTable included. */
    static std::uint64_t EstimateMemory(std::uint64_t inColors);

private:
    struct Node {
        NvColorCluster mCluster; // everything below
        std::array<std::uint32_t, 8> mChildren{};
        std::uint32_t mParent = 0;       // node 0 is the root, which has none
        std::uint32_t mOpenChildren = 0; // children that are not leaves
        bool mIsLeaf = false;
    };
    class Thinner;

    void AddCluster(NvColor inPlace, const NvColorCluster& inCluster);
    void DropLowestLevel();

    std::uint32_t mTableSize;
    int mLevels = 8;              // below the root
    std::uint32_t mLeafCount = 0; // distinct colours, as far as mLevels separates them
    std::vector<Node> mNodes;
};

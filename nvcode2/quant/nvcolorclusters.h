#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "nvcode2/image/nvcolortable.h"

/** Pixels taken together: enough to know their mean and their squared error around it. */
struct NvColorCluster {
    std::uint64_t mWeight = 0; // pixels
    std::uint64_t mRed = 0;    // sums over the pixels
    std::uint64_t mGreen = 0;
    std::uint64_t mBlue = 0;
    std::uint64_t mSquares = 0; // sum of red^2 + green^2 + blue^2

    void Add(const NvColorCluster& inCluster);
    double SquaredError() const;
    NvColor Mean() const;
};

/** Merges clusters two by two, each time those whose merging adds the least squared error, until no more than
 *  inCount are left. The clusters' order beforehand does not matter. Time grows with the square of their
 *  number.
 *
 *  After W. H. Equitz, "A New Vector Quantization Clustering Algorithm", 1989.
 *
 *  @param ioClusters  none of weight 0; their order afterwards has no meaning */
void NvMergeClusters(std::vector<NvColorCluster>& ioClusters, std::size_t inCount);

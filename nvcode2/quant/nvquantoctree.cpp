#include "nvcode2/quant/nvquantoctree.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>
#include <queue>
#include <tuple>
#include <utility>

#include "nvcode2/base/nvassert.h"

namespace {

// A tree of so many leaves takes about 30 MB. When there are more colours, those that differ in their lowest
// bits alone share one; the palette is made from far fewer.
constexpr std::uint32_t km_MaxLeaves = 131072;

// Leaves left for the pairwise merge, whose time grows with their square. From 512 on the palettes are as
// good as those of merging all colours; 1024 costs about ten milliseconds.
constexpr std::size_t km_LeavesToMerge = 1024;

std::uint32_t ChildSlot(NvColor inColor, int inLevel) {
    const int shift = 7 - inLevel;
    return ((inColor.red >> shift) & 1U) << 2 | ((inColor.green >> shift) & 1U) << 1 |
           ((inColor.blue >> shift) & 1U);
}

std::uint8_t RoundedQuotient(std::uint64_t inSum, std::uint64_t inCount) {
    return static_cast<std::uint8_t>((inSum + inCount / 2) / inCount);
}

} // namespace

void NvQuantOctree::Cluster::Add(const Cluster& inCluster) {
    mWeight += inCluster.mWeight;
    mRed += inCluster.mRed;
    mGreen += inCluster.mGreen;
    mBlue += inCluster.mBlue;
    mSquares += inCluster.mSquares;
}

double NvQuantOctree::Cluster::SquaredError() const {
    const auto red = static_cast<double>(mRed);
    const auto green = static_cast<double>(mGreen);
    const auto blue = static_cast<double>(mBlue);
    const double ofMean = (red * red + green * green + blue * blue) / static_cast<double>(mWeight);
    return std::max(0.0, static_cast<double>(mSquares) - ofMean);
}

NvColor NvQuantOctree::Cluster::Mean() const {
    return {RoundedQuotient(mRed, mWeight), RoundedQuotient(mGreen, mWeight),
            RoundedQuotient(mBlue, mWeight)};
}

NvQuantOctree::NvQuantOctree(std::uint32_t inTableSize) : mTableSize(inTableSize), mNodes(1) {
    NvAssert(1 <= inTableSize && inTableSize <= 256);
}

void NvQuantOctree::AddColor(NvColor inColor, std::uint64_t inWeight) {
    if (inWeight == 0)
        return;
    Cluster pixels;
    pixels.mWeight = inWeight;
    pixels.mRed = inColor.red * inWeight;
    pixels.mGreen = inColor.green * inWeight;
    pixels.mBlue = inColor.blue * inWeight;
    pixels.mSquares =
        (inColor.red * inColor.red + inColor.green * inColor.green + inColor.blue * inColor.blue) * inWeight;

    AddCluster(inColor, pixels);
    while (mLeafCount > km_MaxLeaves)
        DropLowestLevel();
}

void NvQuantOctree::AddCluster(NvColor inPlace, const Cluster& inCluster) {
    std::uint32_t node = 0;
    mNodes[node].mCluster.Add(inCluster);
    for (int level = 0; level < mLevels; ++level) {
        const std::uint32_t slot = ChildSlot(inPlace, level);
        if (mNodes[node].mChildren[slot] == 0) {
            const auto child = static_cast<std::uint32_t>(mNodes.size());
            mNodes[node].mChildren[slot] = child;
            mNodes.emplace_back();
            mNodes[child].mParent = node;
            mNodes[child].mIsLeaf = level == mLevels - 1;
            if (mNodes[child].mIsLeaf)
                ++mLeafCount;
            else
                ++mNodes[node].mOpenChildren;
        }
        node = mNodes[node].mChildren[slot];
        mNodes[node].mCluster.Add(inCluster);
    }
}

// A cluster's mean lies in its own cell, so it leads to the cell above as well. How many levels are left
// depends on all the colours, not on the order in which they came.
void NvQuantOctree::DropLowestLevel() {
    const std::vector<Node> nodes = std::exchange(mNodes, std::vector<Node>(1));
    mLeafCount = 0;
    --mLevels;
    for (const Node& node : nodes)
        if (node.mIsLeaf)
            AddCluster(node.mCluster.Mean(), node.mCluster);
}

void NvQuantOctree::AddHistogram(const NvColorTable& inTable, const std::uint32_t* inHistogram) {
    for (std::uint32_t i = 0; i < inTable.GetSize(); ++i)
        AddColor(inTable.GetColor(i), inHistogram[i]);
}

NvColorTable NvQuantOctree::MakeTable() const {
    std::vector<Cluster> clusters = ThinOut(mLeafCount <= mTableSize ? mLeafCount : km_LeavesToMerge);
    MergePairs(clusters, mTableSize);

    std::vector<std::pair<std::uint64_t, NvColor>> colors;
    colors.reserve(clusters.size());
    for (const Cluster& cluster : clusters)
        colors.emplace_back(cluster.mWeight, cluster.Mean());
    std::sort(colors.begin(), colors.end(), [](const auto& inLeft, const auto& inRight) {
        if (inLeft.first != inRight.first)
            return inLeft.first > inRight.first;
        return NvPackColor(inLeft.second) < NvPackColor(inRight.second);
    });

    NvColorTable table(static_cast<std::uint32_t>(colors.size()));
    for (std::uint32_t i = 0; i < table.GetSize(); ++i)
        table.SetColor(i, colors[i].second);
    return table;
}

// At worst no two colours share a cell before they have to. The tree is there twice, as it was added and as
// it is thinned, one of them with room to grow; what the thinning notes down is less than another one.
std::uint64_t NvQuantOctree::EstimateMemory(std::uint64_t inColors) {
    constexpr std::uint64_t km_Trees = 4;
    const std::uint64_t leaves = std::min<std::uint64_t>(inColors, km_MaxLeaves);
    std::uint64_t nodes = 1;
    for (int level = 1; level <= 8; ++level)
        nodes += std::min(std::uint64_t{1} << 3 * level, leaves);
    return nodes * km_Trees * sizeof(Node);
}

// Turns nodes whose children are all leaves into leaves, the one that adds the least error first, until few
// enough are left.
std::vector<NvQuantOctree::Cluster> NvQuantOctree::ThinOut(std::size_t inLeaves) const {
    std::vector<Node> nodes = mNodes;
    const auto addedError = [&nodes](std::uint32_t inNode) {
        double error = nodes[inNode].mCluster.SquaredError();
        for (const std::uint32_t child : nodes[inNode].mChildren)
            if (child != 0)
                error -= nodes[child].mCluster.SquaredError();
        return error;
    };

    // The tree's shape depends on the order in which colours came, its nodes' numbers too; their clusters do
    // not. So equal errors are told apart by what the clusters hold.
    struct Candidate {
        double mError;
        std::uint64_t mWeight;
        std::uint64_t mKey;
        std::uint32_t mNode;
        bool operator>(const Candidate& inOther) const {
            if (mError != inOther.mError)
                return mError > inOther.mError;
            if (mWeight != inOther.mWeight)
                return mWeight > inOther.mWeight;
            return mKey > inOther.mKey;
        }
    };
    std::priority_queue<Candidate, std::vector<Candidate>, std::greater<>> candidates;
    const auto consider = [&](std::uint32_t inNode) {
        const Cluster& cluster = nodes[inNode].mCluster;
        const std::uint64_t key = NvPackColor(cluster.Mean());
        candidates.push({addedError(inNode), cluster.mWeight, key, inNode});
    };

    std::size_t leaves = mLeafCount;
    if (leaves > inLeaves)
        for (std::uint32_t node = 0; node < nodes.size(); ++node)
            if (!nodes[node].mIsLeaf && nodes[node].mOpenChildren == 0)
                consider(node);
    while (leaves > inLeaves && !candidates.empty()) {
        const std::uint32_t node = candidates.top().mNode;
        candidates.pop();
        for (std::uint32_t& child : nodes[node].mChildren)
            if (child != 0) {
                nodes[child].mIsLeaf = false;
                nodes[child].mCluster = Cluster{};
                child = 0;
                --leaves;
            }
        nodes[node].mIsLeaf = true;
        ++leaves;
        if (node != 0 && --nodes[nodes[node].mParent].mOpenChildren == 0)
            consider(nodes[node].mParent);
    }

    std::vector<Cluster> clusters;
    clusters.reserve(leaves);
    for (const Node& node : nodes)
        if (node.mIsLeaf)
            clusters.push_back(node.mCluster);
    return clusters;
}

// Each cluster remembers the partner that costs least among those behind it, so a merge only asks again for
// the few whose partner is gone.
void NvQuantOctree::MergePairs(std::vector<Cluster>& ioClusters, std::size_t inCount) {
    if (ioClusters.size() <= inCount)
        return;
    struct Point {
        double mRed, mGreen, mBlue, mWeight;
        std::size_t mPartner;
        double mCost;
    };
    std::sort(ioClusters.begin(), ioClusters.end(), [](const Cluster& inLeft, const Cluster& inRight) {
        return std::tie(inLeft.mRed, inLeft.mGreen, inLeft.mBlue, inLeft.mWeight) <
               std::tie(inRight.mRed, inRight.mGreen, inRight.mBlue, inRight.mWeight);
    });
    const auto makePoint = [](const Cluster& inCluster) {
        const auto weight = static_cast<double>(inCluster.mWeight);
        return Point{static_cast<double>(inCluster.mRed) / weight,
                     static_cast<double>(inCluster.mGreen) / weight,
                     static_cast<double>(inCluster.mBlue) / weight,
                     weight,
                     0,
                     0.0};
    };
    std::vector<Point> points;
    points.reserve(ioClusters.size());
    std::transform(ioClusters.begin(), ioClusters.end(), std::back_inserter(points), makePoint);

    const auto cost = [](const Point& inLeft, const Point& inRight) {
        const double red = inLeft.mRed - inRight.mRed;
        const double green = inLeft.mGreen - inRight.mGreen;
        const double blue = inLeft.mBlue - inRight.mBlue;
        return (red * red + green * green + blue * blue) * (inLeft.mWeight * inRight.mWeight) /
               (inLeft.mWeight + inRight.mWeight);
    };
    const auto findPartner = [&points, &cost](std::size_t inIndex) {
        Point& point = points[inIndex];
        point.mCost = std::numeric_limits<double>::infinity();
        point.mPartner = inIndex;
        for (std::size_t other = inIndex + 1; other < points.size(); ++other) {
            const double candidate = cost(point, points[other]);
            if (candidate < point.mCost) {
                point.mCost = candidate;
                point.mPartner = other;
            }
        }
    };
    for (std::size_t i = 0; i < points.size(); ++i)
        findPartner(i);

    while (points.size() > inCount) {
        std::size_t first = 0;
        for (std::size_t i = 1; i < points.size(); ++i)
            if (points[i].mCost < points[first].mCost)
                first = i;
        const std::size_t second = points[first].mPartner;
        ioClusters[first].Add(ioClusters[second]);
        points[first] = makePoint(ioClusters[first]);

        // The last cluster moves into the gap.
        const std::size_t last = points.size() - 1;
        points[second] = points[last];
        ioClusters[second] = ioClusters[last];
        points.pop_back();
        ioClusters.pop_back();

        for (std::size_t i = 0; i < points.size(); ++i) {
            Point& point = points[i];
            const bool partnerChanged =
                point.mPartner == first || point.mPartner == second || point.mPartner == last;
            if (i == first || i == second || partnerChanged) {
                findPartner(i);
                continue;
            }
            for (const std::size_t moved : {first, second})
                if (moved > i && moved < points.size()) {
                    const double candidate = cost(point, points[moved]);
                    if (candidate < point.mCost) {
                        point.mCost = candidate;
                        point.mPartner = moved;
                    }
                }
        }
    }
}

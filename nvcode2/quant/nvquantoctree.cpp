#include "nvcode2/quant/nvquantoctree.h"

#include <algorithm>
#include <functional>
#include <queue>
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

} // namespace

/** Turns nodes whose children are all leaves into leaves, the one that adds the least error first. */
class NvQuantOctree::Thinner {
public:
    Thinner(const std::vector<Node>& inNodes, std::size_t inLeaves) : mNodes(inNodes), mLeaves(inLeaves) {}

    /** The leaves, thinned until no more than inLeaves are left, or all children of one node. */
    std::vector<NvColorCluster> ThinTo(std::size_t inLeaves) {
        if (mLeaves > inLeaves)
            for (std::uint32_t node = 0; node < mNodes.size(); ++node)
                if (!mNodes[node].mIsLeaf && mNodes[node].mOpenChildren == 0)
                    Consider(node);
        while (mLeaves > inLeaves && !mCandidates.empty()) {
            const std::uint32_t node = mCandidates.top().mNode;
            mCandidates.pop();
            MakeLeaf(node);
            if (node != 0 && --mNodes[mNodes[node].mParent].mOpenChildren == 0)
                Consider(mNodes[node].mParent);
        }

        std::vector<NvColorCluster> clusters;
        clusters.reserve(mLeaves);
        for (const Node& node : mNodes)
            if (node.mIsLeaf)
                clusters.push_back(node.mCluster);
        return clusters;
    }

private:
    // The tree's shape depends on the order in which colours came, its nodes' numbers too; their clusters do
    // not. So equal errors are ordered by what the clusters hold.
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

    void Consider(std::uint32_t inNode) {
        const NvColorCluster& cluster = mNodes[inNode].mCluster;
        mCandidates.push({AddedError(inNode), cluster.mWeight, NvPackColor(cluster.Mean()), inNode});
    }

    double AddedError(std::uint32_t inNode) const {
        double error = mNodes[inNode].mCluster.SquaredError();
        for (const std::uint32_t child : mNodes[inNode].mChildren)
            if (child != 0)
                error -= mNodes[child].mCluster.SquaredError();
        return error;
    }

    void MakeLeaf(std::uint32_t inNode) {
        for (std::uint32_t& child : mNodes[inNode].mChildren)
            if (child != 0) {
                mNodes[child].mIsLeaf = false;
                child = 0;
                --mLeaves;
            }
        mNodes[inNode].mIsLeaf = true;
        ++mLeaves;
    }

    std::vector<Node> mNodes;
    std::size_t mLeaves;
    std::priority_queue<Candidate, std::vector<Candidate>, std::greater<>> mCandidates;
};

NvQuantOctree::NvQuantOctree(std::uint32_t inTableSize) : mTableSize(inTableSize), mNodes(1) {
    NvAssert(1 <= inTableSize && inTableSize <= 256);
}

void NvQuantOctree::AddColor(NvColor inColor, std::uint64_t inWeight) {
    if (inWeight == 0)
        return;
    NvColorCluster pixels;
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

void NvQuantOctree::AddCluster(NvColor inPlace, const NvColorCluster& inCluster) {
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
    Thinner thinner(mNodes, mLeafCount);
    std::vector<NvColorCluster> clusters =
        thinner.ThinTo(mLeafCount <= mTableSize ? mLeafCount : km_LeavesToMerge);
    NvMergeClusters(clusters, mTableSize);

    std::vector<std::pair<std::uint64_t, NvColor>> colors;
    colors.reserve(clusters.size());
    for (const NvColorCluster& cluster : clusters)
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

// Worst case: colours share a cell only where the level has fewer cells than colours. There are two trees, as
// added and as thinned, one of them with room to grow; what the thinning notes down is less than a third.
std::uint64_t NvQuantOctree::EstimateMemory(std::uint64_t inColors) {
    constexpr std::uint64_t km_Trees = 4;
    const std::uint64_t leaves = std::min<std::uint64_t>(inColors, km_MaxLeaves);
    std::uint64_t nodes = 1;
    for (int level = 1; level <= 8; ++level)
        nodes += std::min(std::uint64_t{1} << 3 * level, leaves);
    return nodes * km_Trees * sizeof(Node);
}

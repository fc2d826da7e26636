#include "nvcode2/quant/nvcolorclusters.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <tuple>

namespace {

std::uint8_t RoundedQuotient(std::uint64_t inSum, std::uint64_t inCount) {
    return static_cast<std::uint8_t>((inSum + inCount / 2) / inCount);
}

/** Each cluster remembers the partner that costs least among those behind it, so that a merge has to search
 *  again only for the few whose partner is gone. */
class Merger {
public:
    explicit Merger(std::vector<NvColorCluster>& ioClusters) : mClusters(ioClusters) {
        mPoints.reserve(mClusters.size());
        std::transform(mClusters.begin(), mClusters.end(), std::back_inserter(mPoints), MakePoint);
        for (std::size_t i = 0; i < mPoints.size(); ++i)
            FindPartner(i);
    }

    std::size_t GetCount() const { return mPoints.size(); }

    void MergeCheapestPair() {
        const std::size_t first = FindCheapest();
        const std::size_t second = mPoints[first].mPartner;
        mClusters[first].Add(mClusters[second]);
        mPoints[first] = MakePoint(mClusters[first]);

        // The last cluster moves into the gap.
        const std::size_t last = mPoints.size() - 1;
        mPoints[second] = mPoints[last];
        mClusters[second] = mClusters[last];
        mPoints.pop_back();
        mClusters.pop_back();

        for (std::size_t i = 0; i < mPoints.size(); ++i) {
            const std::size_t partner = mPoints[i].mPartner;
            const bool hasLostPartner = partner == first || partner == second || partner == last;
            if (i == first || i == second || hasLostPartner) {
                FindPartner(i);
            } else {
                Consider(i, first);
                Consider(i, second);
            }
        }
    }

private:
    /** A cluster at its mean. */
    struct Point {
        double mRed, mGreen, mBlue, mWeight;
        std::size_t mPartner;
        double mCost; // of merging with the partner
    };

    static Point MakePoint(const NvColorCluster& inCluster) {
        const auto weight = static_cast<double>(inCluster.mWeight);
        return {static_cast<double>(inCluster.mRed) / weight,
                static_cast<double>(inCluster.mGreen) / weight,
                static_cast<double>(inCluster.mBlue) / weight,
                weight,
                0,
                0.0};
    }

    static double CostOf(const Point& inLeft, const Point& inRight) {
        const double red = inLeft.mRed - inRight.mRed;
        const double green = inLeft.mGreen - inRight.mGreen;
        const double blue = inLeft.mBlue - inRight.mBlue;
        return (red * red + green * green + blue * blue) * (inLeft.mWeight * inRight.mWeight) /
               (inLeft.mWeight + inRight.mWeight);
    }

    void FindPartner(std::size_t inIndex) {
        const Point point = mPoints[inIndex];
        double leastCost = std::numeric_limits<double>::infinity();
        std::size_t partner = inIndex;
        for (std::size_t other = inIndex + 1; other < mPoints.size(); ++other) {
            const double cost = CostOf(point, mPoints[other]);
            if (cost < leastCost) {
                leastCost = cost;
                partner = other;
            }
        }
        mPoints[inIndex].mCost = leastCost;
        mPoints[inIndex].mPartner = partner;
    }

    /** Takes a cluster that has changed for a partner, if it is the better one. */
    void Consider(std::size_t inIndex, std::size_t inChanged) {
        if (inChanged <= inIndex || inChanged >= mPoints.size())
            return;
        Point& point = mPoints[inIndex];
        const double cost = CostOf(point, mPoints[inChanged]);
        if (cost < point.mCost) {
            point.mCost = cost;
            point.mPartner = inChanged;
        }
    }

    std::size_t FindCheapest() const {
        std::size_t cheapest = 0;
        for (std::size_t i = 1; i < mPoints.size(); ++i)
            if (mPoints[i].mCost < mPoints[cheapest].mCost)
                cheapest = i;
        return cheapest;
    }

    std::vector<NvColorCluster>& mClusters;
    std::vector<Point> mPoints; // one per cluster
};

} // namespace

void NvColorCluster::Add(const NvColorCluster& inCluster) {
    mWeight += inCluster.mWeight;
    mRed += inCluster.mRed;
    mGreen += inCluster.mGreen;
    mBlue += inCluster.mBlue;
    mSquares += inCluster.mSquares;
}

double NvColorCluster::SquaredError() const {
    const auto red = static_cast<double>(mRed);
    const auto green = static_cast<double>(mGreen);
    const auto blue = static_cast<double>(mBlue);
    const double ofMean = (red * red + green * green + blue * blue) / static_cast<double>(mWeight);
    return std::max(0.0, static_cast<double>(mSquares) - ofMean);
}

NvColor NvColorCluster::Mean() const {
    return {RoundedQuotient(mRed, mWeight), RoundedQuotient(mGreen, mWeight),
            RoundedQuotient(mBlue, mWeight)};
}

void NvMergeClusters(std::vector<NvColorCluster>& ioClusters, std::size_t inCount) {
    if (ioClusters.size() <= inCount)
        return;
    // Costs that are equal are ordered by place, which must not depend on where the clusters came from.
    std::sort(ioClusters.begin(), ioClusters.end(),
              [](const NvColorCluster& inLeft, const NvColorCluster& inRight) {
                  return std::tie(inLeft.mRed, inLeft.mGreen, inLeft.mBlue, inLeft.mWeight) <
                         std::tie(inRight.mRed, inRight.mGreen, inRight.mBlue, inRight.mWeight);
              });
    Merger merger(ioClusters);
    while (merger.GetCount() > inCount)
        merger.MergeCheapestPair();
}

#include "nvcode2/image/nvmakeinvcolormap.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <span>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"

namespace {

constexpr std::uint32_t km_CellsPerAxis = 32;
constexpr std::size_t km_Levels = 6;      // boxes of 32, 16, 8, 4, 2 and 1 cells a side
constexpr std::uint32_t km_BrickSide = 4; // boxes of so many cells a side are searched cell by cell

// A squared distance has 18 bits. In a word without sign the others hold a candidate's place, so that one
// comparison finds the nearest candidate and among equals the first.
constexpr int km_PlaceBits = 13;
constexpr std::size_t km_MostInBrick = std::size_t{1} << km_PlaceBits;

/** The colour a cell stands for. Each rule rises with the component, so the colours of a box lie between
 *  those of its first and its last cell. */
NvColor CellColor(std::uint32_t inRed, std::uint32_t inGreen, std::uint32_t inBlue) {
    return {static_cast<std::uint8_t>(inRed * 8 + inRed / 4),
            static_cast<std::uint8_t>(inGreen * 8 + inGreen / 4),
            static_cast<std::uint8_t>(inBlue * 8 + inBlue % 8)};
}

constexpr std::int32_t Square(std::int32_t inNumber) {
    return inNumber * inNumber;
}

/** A cube of cells, by its first cell. */
struct Box {
    std::uint32_t red;
    std::uint32_t green;
    std::uint32_t blue;
    std::uint32_t side;

    NvColor First() const { return CellColor(red, green, blue); }
    NvColor Last() const { return CellColor(red + side - 1, green + side - 1, blue + side - 1); }
    Box Octant(std::uint32_t inOctant) const {
        const std::uint32_t half = side / 2;
        return {red + (inOctant >> 2) * half, green + (inOctant >> 1 & 1) * half,
                blue + (inOctant & 1) * half, half};
    }
};

/** A palette entry still in the running for a box. */
struct Candidate {
    NvColor color;
    std::uint32_t index;
    std::uint32_t distance; // to the box in hand
};

/** Divides the grid into ever smaller boxes and keeps, for each, the entries that may be nearest to one of
 *  its cells, until one is left, as it is in a box
 *  of one cell at the latest, or the box is small enough to search.
 *
 *  The difference between a point's squared distances to two entries is linear in the point, so over a box
 *  it is extreme at a corner, and one test tells whether an entry is beaten in all of the box. The beater
 *  is the entry nearest to the box's centre. An entry as near everywhere is beaten by a lower index, as in
 *  a search over the whole palette. */
class MapBuilder {
public:
    MapBuilder(std::span<const NvColor> inColors, std::uint8_t* outInvMap)
        : mSize(inColors.size()),
          mInvMap(outInvMap),
          mCandidates(NvMakeArray<Candidate>(inColors.size() * km_Levels)) {
        for (std::uint32_t i = 0; i < mSize; ++i)
            mCandidates[i] = {inColors[i], i, 0};
    }

    void Build() { DivideBox({0, 0, 0, km_CellsPerAxis}, {mCandidates.get(), mSize}, 1); }

private:
    void DivideBox(const Box& inBox, std::span<Candidate> ioCandidates, std::size_t inLevel) {
        const std::span<Candidate> room(mCandidates.get() + inLevel * mSize, mSize);
        for (std::uint32_t octant = 0; octant < 8; ++octant) {
            const Box box = inBox.Octant(octant);
            const Candidate nearest = FindNearest(box, ioCandidates);
            const auto kept = room.first(Keep(box, nearest, ioCandidates, room.data()));
            if (kept.size() == 1)
                FillBox(box, nearest.index);
            else if (box.side == km_BrickSide && kept.size() <= km_MostInBrick)
                SearchBrick(box, kept);
            else
                DivideBox(box, kept, inLevel + 1);
        }
    }

    /** Measures every candidate's distance to the centre of a box. Lengths are doubled and squares
     *  quadrupled, since a centre may lie between two levels. */
    static Candidate FindNearest(const Box& inBox, std::span<Candidate> ioCandidates) {
        const NvColor low = inBox.First();
        const NvColor high = inBox.Last();
        const int red = low.red + high.red;
        const int green = low.green + high.green;
        const int blue = low.blue + high.blue;
        std::uint64_t best = std::numeric_limits<std::uint64_t>::max(); // distance, then place
        for (std::size_t i = 0; i < ioCandidates.size(); ++i) {
            const NvColor color = ioCandidates[i].color;
            const int dr = red - 2 * color.red;
            const int dg = green - 2 * color.green;
            const int db = blue - 2 * color.blue;
            const auto distance = static_cast<std::uint32_t>(dr * dr + dg * dg + db * db);
            ioCandidates[i].distance = distance;
            best = std::min(best, std::uint64_t{distance} << 32 | i);
        }
        return ioCandidates[static_cast<std::uint32_t>(best)];
    }

    /** Copies the candidates that inBest does not beat in all of the box, in their order. */
    static std::size_t Keep(const Box& inBox, const Candidate& inBest,
                            std::span<const Candidate> inCandidates, Candidate* outKept) {
        const NvColor low = inBox.First();
        const NvColor high = inBox.Last();
        const int redSpan = high.red - low.red;
        const int greenSpan = high.green - low.green;
        const int blueSpan = high.blue - low.blue;
        std::size_t count = 0;
        for (const Candidate& candidate : inCandidates) {
            const int reach = redSpan * std::abs(inBest.color.red - candidate.color.red) +
                              greenSpan * std::abs(inBest.color.green - candidate.color.green) +
                              blueSpan * std::abs(inBest.color.blue - candidate.color.blue);
            // how much farther than the best it is, in the corner that suits it most
            const int behind = static_cast<int>(candidate.distance - inBest.distance) - 4 * reach;
            outKept[count] = candidate;
            count += behind < 0 || (behind == 0 && candidate.index <= inBest.index);
        }
        return count;
    }

    /** Finds the nearest candidate of every cell. Plain loops over all cells, with nothing to decide in
     *  between, are what compilers turn into vector instructions. */
    void SearchBrick(const Box& inBox, std::span<const Candidate> inCandidates) {
        constexpr std::uint32_t slice = km_BrickSide * km_BrickSide; // cells of one red level
        std::array<std::int32_t, slice * km_BrickSide> best;         // distance, then place
        best.fill(std::numeric_limits<std::int32_t>::max());
        for (std::size_t place = 0; place < inCandidates.size(); ++place) {
            const NvColor color = inCandidates[place].color;
            std::array<std::int32_t, km_BrickSide> red, green, blue;
            for (std::uint32_t i = 0; i < km_BrickSide; ++i) {
                const NvColor cell = CellColor(inBox.red + i, inBox.green + i, inBox.blue + i);
                red[i] = Square(cell.red - color.red) << km_PlaceBits;
                green[i] = Square(cell.green - color.green) << km_PlaceBits;
                blue[i] = Square(cell.blue - color.blue) << km_PlaceBits | static_cast<std::int32_t>(place);
            }
            std::array<std::int32_t, slice> greenBlue;
            for (std::size_t i = 0; i < slice; ++i)
                greenBlue[i] = green[i / km_BrickSide] + blue[i % km_BrickSide];
            for (std::size_t r = 0; r < km_BrickSide; ++r)
                for (std::size_t i = 0; i < slice; ++i)
                    best[r * slice + i] = std::min(best[r * slice + i], red[r] + greenBlue[i]);
        }
        for (std::uint32_t i = 0; i < best.size(); ++i) {
            const std::uint32_t cell = (inBox.red + i / slice) << 10 |
                                       (inBox.green + i / km_BrickSide % km_BrickSide) << 5 |
                                       (inBox.blue + i % km_BrickSide);
            const std::size_t place = static_cast<std::uint32_t>(best[i]) % km_MostInBrick;
            mInvMap[cell] = static_cast<std::uint8_t>(inCandidates[place].index);
        }
    }

    void FillBox(const Box& inBox, std::uint32_t inIndex) {
        for (std::uint32_t red = inBox.red; red < inBox.red + inBox.side; ++red) {
            for (std::uint32_t green = inBox.green; green < inBox.green + inBox.side; ++green) {
                std::uint8_t* const cells = mInvMap + (red << 10 | green << 5 | inBox.blue);
                std::fill_n(cells, inBox.side, static_cast<std::uint8_t>(inIndex));
            }
        }
    }

    std::size_t mSize; // palette entries
    std::uint8_t* mInvMap;
    std::unique_ptr<Candidate[]> mCandidates; // one list per level, the whole palette first
};

} // namespace

void MakeInverseColorMap(const NvColorTable* inTablePtr, std::uint8_t* outInvMap) {
    NvAssert(inTablePtr && outInvMap);
    const std::uint32_t nTableColors = inTablePtr->GetSize();
    NvAssert(nTableColors);
    MapBuilder({inTablePtr->GetColors(), nTableColors}, outInvMap).Build();
}

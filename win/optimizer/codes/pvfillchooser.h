#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "win/optimizer/codes/pvgreedyparser.h"
#include "win/optimizer/codes/pvlzwparser.h"

/** Settles the choices of an animation's frames, one after the other, so that each needs few codes.
 *
 *  The best of a few ways counts, among them leaving everything as it is. Reading a frame once for each takes
 *  most of a run, so a way is tried only where it is likely to pay: what it saved in earlier frames predicts
 *  what it will save in the next, and now and then it gets another chance. */
class PvFillChooser {
public:
    using Pixels = std::vector<std::uint8_t>;

    /** @param ioStrings  scratch space while it reads frames; borrowed for the chooser's life */
    explicit PvFillChooser(NvLZWStringTable& ioStrings) : mParser(ioStrings), mGreedyParser(ioStrings) {}

    /** Begins with the next frame.
     *  @param inPresent    its pixels in the order of the file, at least one
     *  @param inPixelBits  of its codes
     *  @param inKnownCodes LZW codes that it takes; 0: unknown
     *  @return             whether any way is worth trying on it */
    bool Begin(const Pixels& inPresent, std::uint32_t inPixelBits, std::uint64_t inKnownCodes);

    /** @param inChoices  of the frame given to Begin, when that returned true
     *  @return           the pixels, valid until the choices change or the next call; null when nothing beats
     *  the present ones */
    const Pixels* Choose(const PvPixelChoices& inChoices);

    /** Codes of the frame as it is settled so far. */
    std::uint64_t GetFewestCodes() const { return mFewest; }

private:
    enum Way { km_AllOthers, km_ShortRuns, km_Greedy, km_Ways };

    /** How a way has done so far. */
    struct Record {
        std::uint32_t mPixelsPerCode; // that may be read for each code saved
        double mCodes =
            1000.0; // of the frames it was tried on; starts as if it had been tried on a usual frame
        double mSaved = 30.0;     // of these
        std::uint32_t mPause = 0; // frames to pass over while it seems not to pay
        std::uint32_t mPassedOver = 0;
        bool mIsToBeTried = false;
    };

    static bool IsToBeTried(Record& ioRecord, std::uint64_t inPixels, std::uint64_t inCodes);
    std::uint64_t CountCodes(const Pixels& inPixels, std::uint64_t inToBeat);
    void Consider(Way inWay, std::uint64_t inCodes, const Pixels& inPixels);

    // In proportion to how fast each way reads. Trying all three on every frame makes files 0.1 % smaller and
    // takes twice the time.
    std::array<Record, km_Ways> mRecords{{{22000}, {44000}, {8500}}};
    PvLZWParser mParser;
    PvGreedyParser mGreedyParser;
    std::uint64_t mPresentCodes = 0;
    std::uint64_t mFewest = 0; // codes
    const Pixels* mBest = nullptr;
    Pixels mShortRuns;
    Pixels mGreedy;
};

#pragma once

#include <array>
#include <cstdint>

#include "nvcode2/gif/nvlzwstrings.h"
#include "win/optimizer/codes/pvfillchooser.h"
#include "win/optimizer/codes/pvlookaheadparser.h"
#include "win/optimizer/codes/pvpixelchoices.h"

class NvGIFFrame;

/** Cuts an animation's frames, one after the other, into strings that take few bits: PvLookAheadParser with
 *  more caution and with none, whichever does better.
 *
 *  Nothing displayed changes: over a canvas, pixels that show what is there already are drawn or not, as
 *  suits the strings. */
class PvFrameCutter {
public:
    /** @param ioStrings  scratch space while a frame is cut; borrowed for the cutter's life */
    explicit PvFrameCutter(NvLZWStringTable& ioStrings) : mChooser(ioStrings), mParser(ioStrings) {}

    /** Takes the next frame, whose table must be final except for its length.
     *  @param inKnownCodes  LZW codes that it takes as it is; 0: unknown
     *  @param inCanvas  what lies under it, in indices of its table; null to leave its pixels as they are
     *  @return          the strings, valid until the next call; null when the longest ones, and clearing at
     *  once, do as well */
    const NvLZWStrings* Cut(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes, const PvFillCanvas* inCanvas);

private:
    using Pixels = PvFillChooser::Pixels;
    using Result = PvLookAheadParser::Result;

    /** A way of parsing. */
    struct Way {
        PvLookAheadParser::Caution mCaution;
        bool mHasChoices;         // else it parses the pixels that PvFillChooser settled
        std::uint32_t mPause = 0; // frames to pass over while it does not win
        std::uint32_t mPassedOver = 0;
        Result mResult{};
    };

    static bool IsToBeTried(Way& ioWay);
    static bool Learn(Way& ioWay, std::uint64_t inFewest);

    PvFillChooser mChooser;
    PvLookAheadParser mParser;
    PvPixelChoices mChoices;
    PvPixelChoices mSettled; // without any choice
    std::array<Way, 3> mWays{{{{2, 2}, true}, {{2, 2}, false}, {{0, 0}, true}}};
};

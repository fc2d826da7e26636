#pragma once

#include <algorithm>
#include <cstdint>

#include "nvcode2/base/nverrorcode.h"
#include "win/optimizer/base/pvopthost.h"
#include "win/optimizer/base/pvwork.h"

/** Reports to the host how far the file in hand is, raises code 3 when the host asks to stop, and keeps count
 *  of the work.
 *
 *  Each step has a share of the whole and reports its frames within that share. */
class PvProgress {
public:
    /** How far a file is at the end of each step, in the order of the steps. The shares follow the time that
     *  the steps take on animations, roughly; the rest up to 1.0 is for putting the file in place. */
    static constexpr double km_ColoursCounted = 0.2;
    static constexpr double km_PaletteBuilt = 0.35;
    static constexpr double km_Rebuilt = 0.45;
    static constexpr double km_FirstPassWritten = 0.75;
    static constexpr double km_FirstPassChecked = 0.85;
    static constexpr double km_ReadAgain = 0.88;
    static constexpr double km_SecondPassWritten = 0.96;
    static constexpr double km_SecondPassChecked = 0.99;

    /** @param inHost  borrowed
     *  @param inWork  that the file may cost, see PvTooMuchWork */
    explicit PvProgress(PvOptHost& inHost, std::uint64_t inWork = UINT64_MAX)
        : mHost(inHost), mWorkLeft(inWork) {}

    /** The next step takes the file to inEnd from where the last one left it. */
    void BeginStep(double inEnd) {
        mBegin = mEnd;
        mEnd = inEnd;
    }

    /** @throws NvErrorCode 3 when the host asks to stop */
    void ReportFrame(std::uint32_t inIndex, std::uint32_t inCount) {
        mReported = std::max(mReported, mBegin + (mEnd - mBegin) * inIndex / inCount);
        if (mHost.ReportProgress(mReported))
            NvThrow(NvErrorCode::km_Cancelled);
    }

    /** @throws PvTooMuchWork when that much is not left */
    void DemandWork(std::uint64_t inWork) const {
        if (inWork > mWorkLeft)
            throw PvTooMuchWork();
    }

    /** @throws PvTooMuchWork when that much was not left */
    void SpendWork(std::uint64_t inWork) {
        DemandWork(inWork);
        mWorkLeft -= inWork;
    }

private:
    PvOptHost& mHost;
    std::uint64_t mWorkLeft;
    double mBegin = 0.0;
    double mEnd = 0.0;
    double mReported = 0.0; // never goes back, even when a step is repeated with another tolerance
};

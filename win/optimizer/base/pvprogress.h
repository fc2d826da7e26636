#pragma once

#include <algorithm>
#include <cstdint>

#include "nvcode2/base/nverrorcode.h"
#include "win/optimizer/base/pvopthost.h"

/** Tells the host how far the file in hand is, and raises code 3 when the host wants to stop.
 *
 *  Each step of a pass is given a share of the whole and reports its frames within that share. */
class PvProgress {
public:
    /** @param inHost  borrowed */
    explicit PvProgress(PvOptHost& inHost) : mHost(inHost) {}

    /** The next step takes the file to inEnd, 0.0 to 1.0, from where the last one left it. */
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

private:
    PvOptHost& mHost;
    double mBegin = 0.0;
    double mEnd = 0.0;
    double mReported = 0.0; // never goes back, also when a pass is done again
};

#pragma once

#include <cstdint>

#include "nvcode2/base/nverrorcode.h"

/** Long loops of the library report to it how far they are; its answer may stop them. */
class NvProgressIndicator {
public:
    NvProgressIndicator() = default;
    NvProgressIndicator(const NvProgressIndicator&) = delete;
    NvProgressIndicator& operator=(const NvProgressIndicator&) = delete;
    virtual ~NvProgressIndicator() = default;

    /** inDone of inTotal steps are done. @return whether to stop */
    virtual bool Progress(std::uint32_t inDone, std::uint32_t inTotal) = 0;
};

/** For the loops: reports a step and raises code 3 when the indicator wants the loop to stop. Whatever the
 *  loop was building is then abandoned. A null indicator never stops anything. */
inline void NvReportProgress(NvProgressIndicator* inIndicator, std::uint32_t inDone, std::uint32_t inTotal) {
    if (inIndicator && inIndicator->Progress(inDone, inTotal))
        NvThrow(NvErrorCode::km_Cancelled);
}

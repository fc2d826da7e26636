#include "win/optimizer/frames/pvload.h"

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/gif/nvlentstringtable.h"
#include "win/optimizer/base/pvmemory.h"
#include "win/optimizer/base/pvprogress.h"

std::unique_ptr<NvAnimation> LoadAnimation(const char* inPath, std::uint64_t inMemoryLimit,
                                           PvProgress& ioProgress) {
    NvGIFFrameReader reader(inPath, inMemoryLimit);
    const std::uint64_t memory = PvEstimateMemory(reader);
    const auto checkMemory = [&](std::uint64_t inFrames) {
        if (memory + inFrames > inMemoryLimit)
            NvThrow(NvErrorCode::km_OutOfMemory);
    };
    checkMemory(0);
    ioProgress.SpendWork(PvWorkOfReading(reader));
    const std::shared_ptr<NvGIFGlobalInfo> info = reader.ShareGlobalInfo();
    auto animation = std::make_unique<NvAnimation>(info, reader.GetScreenWidth(), reader.GetScreenHeight());
    NvLentStringTable strings;
    for (std::uint32_t i = 0; i < reader.GetFrameCount(); ++i) {
        ioProgress.ReportFrame(i, reader.GetFrameCount());
        animation->AddFrame(NvPackedFrame(reader.ReadFrame(i), strings));
        checkMemory(animation->GetMemory());
    }
    return animation;
}

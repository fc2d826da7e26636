#include "win/optimizer/codes/pvfill.h"

#include "nvcode2/gif/nvgifframe.h"

void PvUndrawnFiller::FillUndrawnPixels(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes) {
    mCanvas.Prepare(ioFrame);
    if (ioFrame.HasTransparency()) {
        PvCollectPresent(ioFrame, mChoices);
        if (mChooser.Begin(mChoices.mPresent, mChoices.mPixelBits, inKnownCodes) &&
            PvCollectOthers(ioFrame, mCanvas, PvChoice::km_Undrawn, mChoices))
            if (const PvFillChooser::Pixels* better = mChooser.Choose(mChoices))
                PvStorePixels(ioFrame, *better);
    }
    mCanvas.Draw(ioFrame);
}

const NvLZWStrings* PvUndrawnFiller::Cut(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes,
                                         PvFrameCutter& ioCutter) {
    mCanvas.Prepare(ioFrame);
    const NvLZWStrings* strings = ioCutter.Cut(ioFrame, inKnownCodes, &mCanvas);
    mCanvas.Draw(ioFrame);
    return strings;
}

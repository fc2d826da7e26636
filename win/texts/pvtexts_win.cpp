#include "nvcode2/base/nvmodulestrings_win.h"
#include "win/texts/pvtexts.h"

const NvStringResources* PvGetTexts() {
    static const NvModuleStrings strings = NvModuleStrings::OfThisProgram();
    return strings.HasModule() ? &strings : nullptr;
}

#include "nvcode2/base/nvstringresource.h"
#include "win/texts/pvtexts.h"

namespace {

constexpr NvStringTable::Entry km_Texts[] = {
#include "pvtexttable.inc"
};

} // namespace

const NvStringResources* PvGetTexts() {
    static const NvStringTable table(km_Texts);
    return &table;
}

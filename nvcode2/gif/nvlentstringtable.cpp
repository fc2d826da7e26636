#include "nvcode2/gif/nvlentstringtable.h"

#include <array>
#include <utility>

#include "nvcode2/gif/nvlzwstringtable.h"

namespace {

/** The tables that nobody has at the moment. More are seldom needed at once. */
using IdleTables = std::array<std::unique_ptr<NvLZWStringTable>, 3>;

IdleTables& GetIdleTables() {
    thread_local IdleTables tables;
    return tables;
}

} // namespace

NvLentStringTable::NvLentStringTable() {
    for (std::unique_ptr<NvLZWStringTable>& idle : GetIdleTables())
        if (idle) {
            mTable = std::move(idle);
            return;
        }
    mTable = std::make_unique<NvLZWStringTable>();
}

NvLentStringTable::~NvLentStringTable() {
    mTable->Clear();
    for (std::unique_ptr<NvLZWStringTable>& idle : GetIdleTables())
        if (!idle) {
            idle = std::move(mTable);
            return;
        }
}

#pragma once

#include <memory>

class NvLZWStringTable;

/** A string table of this thread, empty, that goes back to it when this object ends.
 *
 *  A fresh table's pages cost more than all strings of a small picture, and a picture passes through a dozen
 *  encoders and estimates, one or two at a time. */
class NvLentStringTable {
public:
    /** @throws NvErrorCode  2 */
    NvLentStringTable();
    ~NvLentStringTable();
    NvLentStringTable(const NvLentStringTable&) = delete;
    NvLentStringTable& operator=(const NvLentStringTable&) = delete;

    operator NvLZWStringTable&() const { return *mTable; } // NOLINT(google-explicit-constructor)

private:
    std::unique_ptr<NvLZWStringTable> mTable;
};

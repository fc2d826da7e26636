#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "wnatom/wnsystem.h"

class MizerDelivery;

/** What a file must gain at least to be worth replacing. */
struct MizerLeastSaving {
    std::uint32_t mBytes = 0;
    double mPercentage = 0; ///< of the original size

    bool IsSet() const { return mBytes != 0 || mPercentage > 0; }
    bool IsReached(std::uint32_t inOriginalSize, std::uint32_t inNewSize) const {
        const std::uint32_t saved = inOriginalSize - inNewSize;
        return saved >= mBytes && saved >= mPercentage / 100.0 * inOriginalSize;
    }
};

/** How a batch treats the files it makes smaller. */
struct MizerOptions {
    MizerDelivery* mDelivery = nullptr; ///< borrowed; null: results take the places of their originals
    MizerLeastSaving mLeastSaving;      ///< files that gain less stay as they are
    bool mKeepsTimes = false;           ///< new files have the modification times of their originals
    bool mSkipsDone = false;            ///< skip files that an earlier run has finished with
    bool mLeavesDone = false;           ///< leave them as they are, but deliver and count them
    bool mNotesDone = false;            ///< keep in mind which files this run has finished with
    bool mSharesFiles = true;           ///< other runs may know of the files, so each is claimed first
    std::function<std::string()> mFindDataFolder = &WnGetDataFolder; ///< see MizerDataFolder
};

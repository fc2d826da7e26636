#include "win/batch/mizertotals.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <utility>

#include "win/batch/mizerpreferences.h"
#include "win/batch/mizershell.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnpref.h"

namespace {

constexpr const char* km_BytesSaved = "BYTESSAVED";
constexpr const char* km_FilesProcessed = "FILESPROCESSED";

std::string SavedText(std::uint32_t inSaved) {
    return PvSay(PvText::km_BytesSaved, {std::to_string(inSaved)});
}

void Show(MizerShell& inShell, MizerControl inControl, const std::string& inText) {
    inShell.SetPanelText(inControl, inText.c_str());
}

} // namespace

MizerTotals::MizerTotals(WnPref& inPrefs, MizerShell& inShell)
    : mPrefs(inPrefs),
      mShell(inShell),
      mToDateSaved(MizerFindPreference(km_BytesSaved)->Read(inPrefs)),
      mFilesProcessed(MizerFindPreference(km_FilesProcessed)->Read(inPrefs)) {
    ShowFilesProcessed();
    ShowThisBatch();
    ShowToDate();
}

MizerTotals::~MizerTotals() {
    Store();
}

void MizerTotals::Store() {
    if (mFilesToStore == 0)
        return;
    try {
        const WnPrefNumber deltas[] = {{km_BytesSaved, std::exchange(mSavedToStore, 0)},
                                       {km_FilesProcessed, std::exchange(mFilesToStore, 0)}};
        mPrefs.AddToDWords(deltas);
    } catch (const std::bad_alloc&) {
        return; // the pictures are done; only the counts are lost
    }
}

void MizerTotals::StartBatch() {
    mBatchSaved = 0;
    mBatchOriginal = 0;
    ShowThisBatch();
}

void MizerTotals::EndBatch(bool inIsCancelled) {
    if (mThisFileSaved != 0 && !inIsCancelled)
        return;
    Show(mShell, MizerControl::km_ThisFile, "");
    Show(mShell, MizerControl::km_ThisFilePercent, "");
}

void MizerTotals::StartFile(const char* inPath) {
    ShowThisFile(0);
    ++mFilesProcessed;
    ++mFilesToStore;
    ShowFilesProcessed();
    Show(mShell, MizerControl::km_FileName, MizerPanelName(inPath));
}

void MizerTotals::SetOriginalSize(std::uint32_t inSize) {
    mOriginalSize = inSize;
    Show(mShell, MizerControl::km_FileSize, PvSay(PvText::km_BytesUnoptimized, {std::to_string(inSize)}));
}

void MizerTotals::AddSaving(std::uint32_t inNewSize) {
    ShowThisFile(inNewSize);
    mBatchSaved += mThisFileSaved;
    mBatchOriginal += mOriginalSize;
    mToDateSaved += mThisFileSaved;
    mSavedToStore += mThisFileSaved;
    ShowThisBatch();
    ShowToDate();
}

void MizerTotals::ShowThisFile(std::uint32_t inNewSize) {
    mThisFileSaved = inNewSize == 0 ? 0 : mOriginalSize - std::min(inNewSize, mOriginalSize);
    Show(mShell, MizerControl::km_ThisFile,
         mThisFileSaved == 0 ? PvSay(PvText::km_ProcessingFile) : SavedText(mThisFileSaved));
    Show(mShell, MizerControl::km_ThisFilePercent, MizerPercentage(mThisFileSaved, mOriginalSize));
}

void MizerTotals::ShowThisBatch() const {
    Show(mShell, MizerControl::km_ThisBatch, SavedText(mBatchSaved));
    Show(mShell, MizerControl::km_ThisBatchPercent, MizerPercentage(mBatchSaved, mBatchOriginal));
}

void MizerTotals::ShowToDate() const {
    Show(mShell, MizerControl::km_ToDate, SavedText(mToDateSaved));
}

void MizerTotals::ShowFilesProcessed() const {
    Show(mShell, MizerControl::km_FilesToDate,
         PvSay(PvText::km_FilesToDate, {std::to_string(mFilesProcessed)}));
}

std::string MizerPercentage(std::uint32_t inSaved, std::uint32_t inOriginal) {
    double percentage = 0;
    if (inOriginal != 0)
        percentage = static_cast<double>(static_cast<float>(inSaved)) * 100.0 /
                     static_cast<double>(static_cast<float>(inOriginal));
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%3.1f%c", percentage, '%');
    return text.data();
}

std::string MizerPanelName(const std::string& inPath) {
    constexpr std::size_t shortened = 30; // bytes from which on a path is cut
    constexpr std::size_t kept = 28;
    if (inPath.size() < shortened)
        return inPath;
    std::size_t start = inPath.size() - kept;
    while (start < inPath.size() && (static_cast<unsigned char>(inPath[start]) & 0xc0) == 0x80)
        ++start; // within a character of UTF-8
    return "..." + inPath.substr(start);
}

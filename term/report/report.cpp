#include "term/report/report.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/file/nvfile.h"
#include "term/report/reporttext.h"
#include "term/text/utf8.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr std::string_view km_Signature = "<!DOCTYPE html>\n<!-- A report of parvigif. -->\n";
constexpr std::size_t km_RoomForTotals = 2048; // characters; they need about a quarter of it

/** Another page, or a picture named by mistake, is never replaced. */
bool IsReport(const char* inPath) {
    std::array<char, km_Signature.size()> start{};
    NvFile file(inPath);
    file.Open(NvFile::km_ReadPerm);
    if (file.GetLength() < start.size())
        return false;
    file.Read(start.data(), static_cast<std::uint32_t>(start.size()));
    return std::string_view(start.data(), start.size()) == km_Signature;
}

/** @return whether nothing is there yet; an older report may be replaced */
bool CheckTarget(const char* inPath) {
    const WnFileKind kind = WnGetFileKind(inPath);
    if (kind == WnFileKind::km_Missing)
        return true;
    if (kind != WnFileKind::km_RegularFile || !IsReport(inPath))
        NvThrow(NvErrorCode::km_FileExists);
    WnCheckReplaceable(inPath);
    return false;
}

} // namespace

TermReport::TermReport(const std::string& inPath, std::uint64_t inLimit, bool inIsDryRun)
    : mPath(inPath),
      mLimit(inLimit),
      mIsNew(CheckTarget(inPath.c_str())),
      mFile(inPath.c_str()),
      mStream(mFile.OpenStream()) {
    mCounts.mIsDryRun = inIsDryRun;
    if (!mStream)
        ThrowRuntimeError(errno);
    const TermReportFrame frame = TermMakeReportFrame();
    mEnd = frame.mEnd;
    Write(frame.mHead);
    mTotalsAt = std::ftell(mStream.get());
    Write(std::string(km_RoomForTotals, ' ') + frame.mMiddle);
}

TermReport::~TermReport() = default;

void TermReport::BeforeReplace(const char* inPath) {
    mPictures[inPath].mBefore = Read(inPath);
}

void TermReport::ResultMade(const char* inPath, const char* inResultPath) {
    mPictures[inPath].mAfter = Read(inResultPath);
}

/** All bytes of a file, unless it has more than the page may still hold, or cannot be read. */
std::optional<TermReport::Bytes> TermReport::Read(const char* inPath) const {
    try {
        NvFile file(inPath);
        file.Open(NvFile::km_ReadPerm);
        const std::uint64_t size = file.GetLength();
        file.Close();
        if (mHeld + size <= mLimit)
            return MizerReadWholeFile(inPath);
    } catch (const NvErrorCode&) { // the file is processed without a picture of it
    }
    return std::nullopt;
}

void TermReport::FileDone(const std::string& inPath, const MizerFileResult& inResult) {
    mCounts.Add(inResult);
    const auto found = mPictures.extract(inPath);
    const Pictures pictures = found ? std::move(found.mapped()) : Pictures();
    if (inResult.mStatus == MizerStatus::km_Skipped)
        return;
    Write(TermReportRow(inResult));
    if (inResult.mStatus == MizerStatus::km_Smaller)
        WritePictures(pictures);
    Write("</tbody>\n");
}

void TermReport::WritePictures(const Pictures& inPictures) {
    const auto& [before, after] = inPictures;
    if (!before || !after || mHeld + before->size() + after->size() > mLimit) {
        ++mLeftOut;
        return;
    }
    mHeld += before->size() + after->size();
    const TermPicturesFrame frame = TermMakePicturesFrame();
    Write(frame.mHead);
    WritePicture("before", *before);
    WritePicture("after", *after);
    Write(frame.mEnd);
}

/** A script of a type that no browser runs: data that costs nothing until it is used. */
void TermReport::WritePicture(const char* inClass, const Bytes& inBytes) {
    Write(std::string("<script type=\"text/plain\" class=\"") + inClass + "\">");
    constexpr std::size_t piece = 3 << 16; // whole groups of three
    for (std::size_t at = 0; at < inBytes.size(); at += piece)
        Write(TermBase64(
            {reinterpret_cast<const char*>(inBytes.data()) + at, std::min(piece, inBytes.size() - at)}));
    Write("</script>\n");
}

void TermReport::Write(const std::string& inText) {
    if (mWriteError == 0 && std::fwrite(inText.data(), 1, inText.size(), mStream.get()) != inText.size())
        mWriteError = errno;
}

void TermReport::Finish(bool inIsCancelled) {
    mCounts.mIsCancelled = inIsCancelled;
    Write(mEnd);
    if (mWriteError == 0 && std::fseek(mStream.get(), mTotalsAt, SEEK_SET) != 0)
        mWriteError = errno;
    Write(TermReportTotals(mCounts, mLeftOut, mLimit).substr(0, km_RoomForTotals));
    if (std::fclose(mStream.release()) != 0 && mWriteError == 0)
        mWriteError = errno;
    if (mWriteError != 0)
        ThrowRuntimeError(mWriteError);
    if (!mIsNew)
        mFile.Commit();
    else if (!mFile.CommitUnlessPresent())
        NvThrow(NvErrorCode::km_FileExists);
}

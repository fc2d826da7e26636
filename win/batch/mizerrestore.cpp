#include "win/batch/mizerrestore.h"

#include <cerrno>
#include <new>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "win/batch/mizerlog.h"
#include "win/optimizer/base/pvmemory.h"
#include "wnatom/wnfileclaim.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

/** What tells a picture from another without a look at its colours. */
struct Shape {
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    std::uint32_t mFrames = 0;
    bool operator==(const Shape&) const = default;
};

Shape GetShape(const NvGIFFrameReader& inReader) {
    return {inReader.GetScreenWidth(), inReader.GetScreenHeight(), inReader.GetFrameCount()};
}

/** @throws NvErrorCode  2, 18, 28, 32, 33 when the file is no sound GIF */
Shape ReadEveryFrame(const char* inPath, std::uint64_t inMemoryLimit) {
    try {
        NvGIFFrameReader reader(inPath, PvUsualMemoryLimit());
        if (reader.EstimatePlayMemory() > (inMemoryLimit != 0 ? inMemoryLimit : PvUsualMemoryLimit()))
            NvThrow(NvErrorCode::km_OutOfMemory);
        for (std::uint32_t i = 0; i < reader.GetFrameCount(); ++i)
            reader.ReadFrame(i);
        return GetShape(reader);
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

/** A damaged picture is nobody's work: it may be replaced by any. */
bool IsOtherImage(const char* inPath, const Shape& inShape) {
    try {
        return GetShape(NvGIFFrameReader(inPath, PvUsualMemoryLimit())) != inShape;
    } catch (const NvErrorCode&) {
        return false;
    }
}

} // namespace

std::string MizerBackupName(const std::string& inPath) {
    return inPath + ".BAK";
}

MizerRestored MizerRestore(const std::string& inPath, std::uint64_t inMemoryLimit) {
    const WnFileClaim claim(WnGetDataFolder(), inPath.c_str());
    if (!claim.IsMine())
        return MizerRestored::km_InUse;
    const std::string backup = MizerBackupName(inPath);
    const WnFileKind backupKind = WnGetFileKind(backup.c_str());
    if (backupKind == WnFileKind::km_Missing)
        return MizerRestored::km_NoBackup;
    const WnFileKind kind = WnGetFileKind(inPath.c_str());
    const bool isThere = kind != WnFileKind::km_Missing;
    if (backupKind != WnFileKind::km_RegularFile || (isThere && kind != WnFileKind::km_RegularFile))
        NvThrow(NvErrorCode::km_WrongPermission);
    if (isThere)
        WnCheckReplaceable(inPath.c_str());

    WnSafeFile file(inPath.c_str(), isThere ? nullptr : backup.c_str());
    file.CopyFrom(backup.c_str());
    const Shape shape = ReadEveryFrame(file.GetTemporaryPath(), inMemoryLimit);
    if (isThere && IsOtherImage(inPath.c_str(), shape))
        return MizerRestored::km_OtherImage;
    file.Commit();
    return MizerRestored::km_Restored;
}

std::string MizerRestoredEntry(std::chrono::sys_seconds inTime, const char* inPath) {
    return MizerEntryHead(inTime, inPath) + "    Restored from its backup.\n";
}

#include "nvcode2/file/nvfile.h"

#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/file/nvfileplatform.h"

namespace {

bool IsCountingPerm(std::uint16_t inPerm) {
    constexpr std::uint16_t km_Counting = NvFile::km_WritePerm | NvFile::km_CountPerm;
    return (inPerm & km_Counting) == km_Counting;
}

NvFilePlatform::Access AccessForPerm(std::uint16_t inPerm) {
    switch (inPerm) {
    case NvFile::km_ReadPerm:
        return NvFilePlatform::Access::km_Read;
    case NvFile::km_WritePerm:
        return NvFilePlatform::Access::km_Write;
    case NvFile::km_ReadPerm | NvFile::km_WritePerm:
        return NvFilePlatform::Access::km_Update;
    default:
        NvThrow(NvErrorCode::km_PermissionDenied);
    }
}

/** Opening has codes of its own for errno, so that a front end can say why a file would not open. */
std::uint32_t CodeForOpenError(std::int32_t inSystemError) {
    switch (inSystemError) {
    case EACCES:
        return NvErrorCode::km_OpenDenied;
    case EEXIST:
    case EINVAL:
        return NvErrorCode::km_WrongPermission;
    case EMFILE:
        return NvErrorCode::km_TooManyFiles;
    case ENOENT:
        return NvErrorCode::km_FileNotFound;
    default:
        return NvErrorCode::km_Failure;
    }
}

/** The result of a platform call; raises by errno when it is -1. */
template <typename Result>
Result Checked(Result inResult) {
    if (inResult == -1)
        ThrowRuntimeError(errno);
    return inResult;
}

/** A position or length as callers see it. Seeking takes signed 32-bit offsets, which sets the limit. */
std::uint32_t WithinLimit(std::uint64_t inBytes) {
    if (inBytes > std::numeric_limits<std::int32_t>::max())
        NvThrow(NvErrorCode::km_OutOfRange);
    return static_cast<std::uint32_t>(inBytes);
}

} // namespace

NvFile::~NvFile() {
    if (mDescriptor != -1 && mCloseOnClose)
        NvFilePlatform::Close(mDescriptor);
}

void NvFile::Open(std::uint16_t inPerm, bool inCloseOnClose, std::int32_t inDescriptor) {
    // Counting may start again at any time, but never at the cost of a descriptor in use.
    if (IsCountingPerm(inPerm) && mDescriptor == -1) {
        mByteCounter = 0;
        mFilePerm = inPerm;
        mIsOpen = true;
        return;
    }
    if (!IsSpecified() && inDescriptor == -1)
        NvThrow(NvErrorCode::km_NoFileSpecified);
    if (mIsOpen)
        NvThrow(NvErrorCode::km_FileAlreadyOpen);

    if (inDescriptor == -1) {
        mDescriptor = NvFilePlatform::Open(GetPath(), AccessForPerm(inPerm));
        if (mDescriptor == -1) {
            const std::int32_t systemError = errno;
            NvThrowWithSystemError(CodeForOpenError(systemError), systemError);
        }
    } else {
        mDescriptor = inDescriptor;
    }
    mByteCounter = 0;
    mFilePerm = inPerm;
    mCloseOnClose = inCloseOnClose;
    mIsOpen = true;
}

void NvFile::Close() {
    RequireOpen();
    mIsOpen = false;
    const std::int32_t descriptor = std::exchange(mDescriptor, -1);
    if (descriptor != -1 && mCloseOnClose && NvFilePlatform::Close(descriptor) == -1)
        NvThrowWithSystemError(NvErrorCode::km_BadDescriptor, errno);
}

std::uint32_t NvFile::Read(void* outBuffer, std::uint32_t inCount) {
    RequireOpen();
    if (!(mFilePerm & km_ReadPerm))
        NvThrow(NvErrorCode::km_WrongPermission);
    if (inCount == 0)
        return 0;
    const std::int64_t count = Checked(NvFilePlatform::Read(mDescriptor, outBuffer, inCount));
    if (count == 0)
        NvThrow(NvErrorCode::km_EndOfFile);
    return static_cast<std::uint32_t>(count);
}

void NvFile::Write(const void* inBuffer, std::uint32_t inCount) {
    RequireOpen();
    if (!(mFilePerm & km_WritePerm))
        NvThrow(NvErrorCode::km_WrongPermission);
    mByteCounter += inCount;
    if (!IsCounting())
        Checked(NvFilePlatform::Write(mDescriptor, inBuffer, inCount));
}

void NvFile::Seek(std::uint16_t inOrigin, std::int32_t inOffset) {
    RequireOpen();
    Checked(NvFilePlatform::Seek(mDescriptor, inOffset, MapOrigin(inOrigin)));
}

std::uint32_t NvFile::GetPosition() const {
    RequireOpen();
    if (IsCounting())
        return WithinLimit(mByteCounter);
    return WithinLimit(static_cast<std::uint64_t>(Checked(NvFilePlatform::Seek(mDescriptor, 0, SEEK_CUR))));
}

std::uint32_t NvFile::GetLength() const {
    if (IsCounting())
        return WithinLimit(mByteCounter);
    RequireOpen();
    return WithinLimit(static_cast<std::uint64_t>(Checked(NvFilePlatform::GetLength(mDescriptor))));
}

void NvFile::SetLength(std::uint32_t inLength) {
    if (IsCounting()) {
        mByteCounter = inLength;
        return;
    }
    RequireOpen();
    Checked(NvFilePlatform::SetLength(mDescriptor, inLength));
}

void NvFile::Flush() {
    RequireOpen();
    if (!IsCounting())
        Checked(NvFilePlatform::Flush(mDescriptor));
}

void NvFile::Create() {
    RequireClosedWithPath();
    Checked(NvFilePlatform::Create(GetPath()));
}

int NvFile::Delete() {
    RequireClosedWithPath();
    return NvFilePlatform::Remove(GetPath());
}

int NvFile::MapOrigin(std::uint16_t inOrigin) {
    switch (inOrigin) {
    case km_FromStart:
        return SEEK_SET;
    case km_FromCurrent:
        return SEEK_CUR;
    case km_FromEnd:
        return SEEK_END;
    default:
        NvThrow(NvErrorCode::km_BadParameter);
    }
}

bool NvFile::IsCounting() const {
    return IsCountingPerm(mFilePerm);
}

void NvFile::RequireOpen() const {
    if (!mIsOpen)
        NvThrow(NvErrorCode::km_FileNotOpen);
}

void NvFile::RequireClosedWithPath() const {
    if (!IsSpecified())
        NvThrow(NvErrorCode::km_NoFileSpecified);
    if (mIsOpen)
        NvThrow(NvErrorCode::km_FileAlreadyOpen);
}

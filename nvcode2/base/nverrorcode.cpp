#include "nvcode2/base/nverrorcode.h"

#include <cerrno>

#include "nvcode2/base/nvpascalstring.h"

namespace {

NvErrorReportHook gErrorReportHook = nullptr;

std::array<unsigned char, 257> MakePascalString(const char* inText) {
    std::array<unsigned char, 257> pascal{}; // what the copy leaves alone is the NUL
    NvCopyToPascalString(inText, pascal.data());
    return pascal;
}

std::uint32_t CodeForErrno(std::int32_t inSystemError) {
    switch (inSystemError) {
    case ENOENT:
        return NvErrorCode::km_FileNotFound;
    case E2BIG:
    case EINVAL:
        return NvErrorCode::km_BadParameter;
    case EBADF:
        return NvErrorCode::km_BadDescriptor;
    case EAGAIN:
    case EMFILE:
        return NvErrorCode::km_TooManyFiles;
    case ENOMEM:
        return NvErrorCode::km_OutOfMemory;
    case EACCES:
        return NvErrorCode::km_PermissionDenied;
    case EEXIST:
        return NvErrorCode::km_FileExists;
    case EXDEV:
        return NvErrorCode::km_CrossDevice;
    case ENOSPC:
        return NvErrorCode::km_DiskFull;
    case ERANGE:
        return NvErrorCode::km_OutOfRange;
    default:
        return NvErrorCode::km_Failure;
    }
}

} // namespace

NvErrorCode::NvErrorCode(std::uint32_t inCode, const char* inFileName, std::uint32_t inLine)
    : NvErrorCode(inCode, 0, inFileName, inLine) {}

NvErrorCode::NvErrorCode(std::uint32_t inCode, std::int32_t inSystemError, const char* inFileName,
                         std::uint32_t inLine)
    : mCode(inCode), mSystemError(inSystemError), mFileName(MakePascalString(inFileName)), mLine(inLine) {
    if (gErrorReportHook && (mCode != 0 || mSystemError != 0))
        gErrorReportHook(*this);
}

NvErrorCode::NvErrorCode(const NvErrorCode& inError, const char* /*inFileName*/, std::uint32_t /*inLine*/)
    : NvErrorCode(inError) {}

void NvSetErrorReportHook(NvErrorReportHook inHook) {
    gErrorReportHook = inHook;
}

void NvThrow(std::uint32_t inCode, const char* inFileName, std::uint32_t inLine) {
    throw NvErrorCode(inCode, inFileName, inLine);
}

void NvThrowWithSystemError(std::uint32_t inCode, std::int32_t inSystemError, const char* inFileName,
                            std::uint32_t inLine) {
    throw NvErrorCode(inCode, inSystemError, inFileName, inLine);
}

void ThrowRuntimeError(std::int32_t inSystemError) {
    const NvErrorCode error(CodeForErrno(inSystemError), inSystemError, __FILE__, __LINE__);
    throw NvErrorCode(error, __FILE__, __LINE__);
}

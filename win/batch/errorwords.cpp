#include "win/batch/errorwords.h"

#include <cerrno>
#include <cstring>

#include "nvcode2/base/nverrorcode.h"

namespace {

const char* WordsForCode(std::uint32_t inCode) {
    switch (inCode) {
    case NvErrorCode::km_OutOfMemory:
        return "needs more memory than allowed";
    case NvErrorCode::km_Cancelled:
        return "cancelled";
    case NvErrorCode::km_NoFileSpecified:
        return "no file named";
    case NvErrorCode::km_PermissionDenied:
        return "no permission to replace it: the file or its folder is read-only";
    case NvErrorCode::km_TooManyFiles:
        return "too many open files";
    case NvErrorCode::km_FileNotFound:
        return "no such file or folder";
    case NvErrorCode::km_FileAlreadyOpen:
        return "the file is open already";
    case NvErrorCode::km_WrongPermission:
        return "neither a file nor a folder";
    case NvErrorCode::km_OpenDenied:
        return "no permission to open it";
    case NvErrorCode::km_FileNotOpen:
        return "the file is not open";
    case NvErrorCode::km_CrossDevice:
        return "the new file would be on another disk";
    case NvErrorCode::km_EndOfFile:
        return "the file ends too early";
    case NvErrorCode::km_BadDescriptor:
        return "the file could not be closed";
    case NvErrorCode::km_BadParameter:
        return "a value is out of its bounds";
    case NvErrorCode::km_DiskFull:
        return "no space left on the disk";
    case NvErrorCode::km_MissingData:
        return "a colour table or an image is missing";
    case NvErrorCode::km_MalformedGIF:
        return "damaged: not a well-formed GIF file";
    case NvErrorCode::km_OutOfRange:
        return "too large: files of 2 GiB and more are left alone";
    case NvErrorCode::km_FileExists:
        return "the file exists already";
    case NvErrorCode::km_NotGIF:
        return "not a GIF file";
    case NvErrorCode::km_UnknownGIFVersion:
        return "a GIF file of an unknown version";
    case NvErrorCode::km_StringResource:
        return "a text of the program is missing";
    case NvErrorCode::km_NotSupported:
        return "not supported";
    default:
        return "failed";
    }
}

} // namespace

std::string MizerErrorWords(const NvErrorCode& inError) {
    if (inError.GetSystemError() == EBUSY)
        return "another program has it open (code " + std::to_string(inError.GetCode()) + ")";
    const bool onlySystemKnows =
        inError.GetCode() == NvErrorCode::km_Failure && inError.GetSystemError() != 0;
    const std::string words =
        onlySystemKnows ? std::strerror(inError.GetSystemError()) : WordsForCode(inError.GetCode());
    return words + " (code " + std::to_string(inError.GetCode()) + ")";
}

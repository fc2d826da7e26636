#include "win/wholefile.h"

#include <new>

#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvfile.h"

std::vector<unsigned char> MizerReadWholeFile(const char* inPath) {
    try {
        NvFile file(inPath);
        file.Open(NvFile::km_ReadPerm);
        std::vector<unsigned char> bytes(file.GetLength());
        for (std::size_t at = 0; at < bytes.size();)
            at += file.Read(bytes.data() + at, static_cast<std::uint32_t>(bytes.size() - at));
        file.Close();
        return bytes;
    } catch (const NvErrorCode& error) {
        NvThrowWithSystemError(NvErrorCode::km_Failure, error.GetSystemError());
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

void MizerWriteWholeFile(const char* inPath, const std::vector<unsigned char>& inBytes) {
    NvFile file(inPath);
    file.Open(NvFile::km_WritePerm);
    file.Write(inBytes.data(), static_cast<std::uint32_t>(inBytes.size()));
    file.Close();
}

void MizerCopyFile(const char* inFromPath, const char* inToPath) {
    MizerWriteWholeFile(inToPath, MizerReadWholeFile(inFromPath));
}

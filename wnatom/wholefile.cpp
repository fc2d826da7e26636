#include "wnatom/wholefile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/file/nvfile.h"

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

void WnCopyInto(const char* inFromPath, NvFile& ioTarget) {
    std::array<unsigned char, 65536> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): read into
    NvFile source(inFromPath);
    const auto read = [](auto inRead) {
        try {
            return inRead();
        } catch (const NvErrorCode& error) {
            NvThrowWithSystemError(NvErrorCode::km_Failure, error.GetSystemError());
        }
    };
    std::uint32_t left = read([&] {
        source.Open(NvFile::km_ReadPerm);
        return source.GetLength();
    });
    while (left > 0) {
        const std::uint32_t count = read([&] { return source.Read(buffer.data(), buffer.size()); });
        ioTarget.Write(buffer.data(), count);
        left -= std::min(left, count);
    }
}

void MizerCopyFile(const char* inFromPath, const char* inToPath) {
    NvFile target(inToPath);
    target.Open(NvFile::km_WritePerm);
    WnCopyInto(inFromPath, target);
    target.Close();
}

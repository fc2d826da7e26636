#pragma once

#include <vector>

/** All bytes of a file. @throws NvErrorCode  1 when it cannot be read, whatever the reason; 2 */
std::vector<unsigned char> MizerReadWholeFile(const char* inPath);

/** Writes over the file from its start. @throws NvErrorCode  those of NvFile */
void MizerWriteWholeFile(const char* inPath, const std::vector<unsigned char>& inBytes);

/** Copies a file piece by piece, however large it is, over another. Errors as of both. */
void MizerCopyFile(const char* inFromPath, const char* inToPath);

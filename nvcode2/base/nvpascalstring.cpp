#include "nvcode2/base/nvpascalstring.h"

#include "nvcode2/base/nvassert.h"

void NvAppendToPascalString(unsigned char* ioPString, char inChar) {
    NvAssert(*ioPString < 255);
    ++*ioPString;
    ioPString[*ioPString] = static_cast<unsigned char>(inChar);
}

void NvCopyToPascalString(const char* inCString, unsigned char* outPString) {
    unsigned char length = 0;
    while (length < 255 && inCString[length] != '\0') {
        outPString[length + 1] = static_cast<unsigned char>(inCString[length]);
        ++length;
    }
    *outPString = length;
}

void NvPascalStringToUpper(unsigned char* ioPString) {
    for (unsigned i = 1; i <= *ioPString; ++i)
        ioPString[i] = static_cast<unsigned char>(NvCharToUpper(static_cast<char>(ioPString[i])));
}

void NvCStringToUpper(char* ioCString) {
    for (; *ioCString != '\0'; ++ioCString)
        *ioCString = NvCharToUpper(*ioCString);
}

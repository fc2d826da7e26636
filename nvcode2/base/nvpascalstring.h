#pragma once

/** Length-prefixed ("Pascal") strings: one length byte, then up to 255 8-bit characters, no NUL. A buffer of
 *  256 bytes holds any of them.
 *
 *  NvErrorCode keeps its file name as one; appending and changing case are for interfaces that take such
 *  strings. Letters are the ASCII ones; every other byte is left alone, whatever the locale says. */

/** Appends one character. Precondition: *ioPString < 255, and the buffer has room for one more. */
void NvAppendToPascalString(unsigned char* ioPString, char inChar);

/** Copies inCString without its NUL, cut at 255 characters, to a buffer of 1 + min(length, 255) bytes. */
void NvCopyToPascalString(const char* inCString, unsigned char* outPString);

void NvPascalStringToUpper(unsigned char* ioPString);

void NvCStringToUpper(char* ioCString);

inline char NvCharToUpper(char inChar) {
    return inChar >= 'a' && inChar <= 'z' ? static_cast<char>(inChar - 'a' + 'A') : inChar;
}

inline char NvCharToLower(char inChar) {
    return inChar >= 'A' && inChar <= 'Z' ? static_cast<char>(inChar - 'A' + 'a') : inChar;
}

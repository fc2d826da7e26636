#include "nvcode2/base/nvstring.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvpascalstring.h"
#include "nvcode2/base/nvstringresource.h"

NvString::NvString() {
    Allocate(0);
}

NvString::NvString(const char* inCString) {
    NvAssert(inCString);
    const std::size_t length = std::strlen(inCString);
    Allocate(length);
    std::memcpy(mTextPtr, inCString, length);
}

NvString::NvString(const unsigned char* inPString)
    : NvString(reinterpret_cast<const char*>(inPString + 1), *inPString) {}

NvString::NvString(const char* inTextPtr, std::uint32_t inLength) {
    NvAssert(inTextPtr || (inLength == 0));
    Replace(inTextPtr, inLength);
}

NvString::NvString(std::uint32_t inNumber) {
    char text[10];
    Replace(text, NumberToText(inNumber, text));
}

NvString::NvString(std::int32_t inNumber) {
    char text[11];
    Replace(text, NumberToText(inNumber, text));
}

NvString::NvString(const NvStringResources* inModule, std::uint32_t inStringID) {
    if (!inModule)
        NvThrow(NvErrorCode::km_Failure);
    const NvStringBlock block = inModule->FindBlock(inStringID);
    if (!block.mIsFound && block.mSystemError == NvStringResources::km_NotEnoughMemory)
        NvThrowWithSystemError(NvErrorCode::km_OutOfMemory, block.mSystemError);
    if (!block.mIsFound || block.mSize == 0)
        NvThrowWithSystemError(NvErrorCode::km_StringResource, block.mSystemError);
    // The block may hold other texts as well, so its size is only the limit.
    Allocate(block.mSize);
    if (inModule->LoadText(inStringID, mTextPtr, block.mSize) == 0)
        NvThrow(NvErrorCode::km_StringResource);
    SetLength(static_cast<std::uint32_t>(std::strlen(mTextPtr)));
}

NvString::NvString(const NvString& inString) : NvString(inString.mTextPtr, inString.mLength) {}

NvString& NvString::operator=(const NvString& inString) {
    if (this != &inString)
        Replace(inString.mTextPtr, inString.mLength);
    return *this;
}

const char* NvString::GetTextPtr() const {
    NvAssert(mBufferPtr && mTextPtr);
    return mTextPtr;
}

const unsigned char* NvString::GetBufferPtr() const {
    NvAssert(mBufferPtr && mTextPtr);
    return mBufferPtr.get();
}

void NvString::SetLength(std::uint32_t inLength) {
    Resize(inLength);
}

NvString NvString::operator+(const NvString& inString) const {
    NvString sum(*this);
    sum += inString;
    return sum;
}

NvString& NvString::operator+=(const NvString& inString) {
    const std::uint32_t length = mLength;
    const std::uint32_t added = inString.mLength;
    Resize(std::uint64_t{length} + added);
    std::copy_n(inString.mTextPtr, added, mTextPtr + length);
    return *this;
}

std::int32_t NvString::Compare(const NvString& inString) const {
    if (const std::int32_t difference = CompareN(inString, std::min(mLength, inString.mLength)))
        return difference;
    return static_cast<std::int32_t>(mLength > inString.mLength) -
           static_cast<std::int32_t>(mLength < inString.mLength);
}

std::int32_t NvString::CompareN(const NvString& inString, std::uint32_t inNChars) const {
    NvAssert(mLength >= inNChars && inString.mLength >= inNChars);
    return std::memcmp(mTextPtr, inString.mTextPtr, inNChars);
}

void NvString::ToUpper() {
    std::transform(mTextPtr, mTextPtr + mLength, mTextPtr, NvCharToUpper);
}

void NvString::ToLower() {
    std::transform(mTextPtr, mTextPtr + mLength, mTextPtr, NvCharToLower);
}

void NvString::Fill(std::uint32_t inCount, char inChar) {
    NvAssert(inCount <= mLength);
    std::fill_n(mTextPtr, inCount, inChar);
}

void NvString::Fill(char inChar) {
    Fill(mLength, inChar);
}

bool NvString::IsBlank() const {
    return std::all_of(mTextPtr, mTextPtr + mLength, [](char inChar) { return inChar == ' '; });
}

bool NvString::Find(std::uint32_t inStart, char inChar, std::uint32_t& outIndex) const {
    for (std::uint32_t index = inStart; index < mLength; ++index) {
        if (mTextPtr[index] == inChar) {
            outIndex = index;
            return true;
        }
    }
    return false;
}

bool NvString::FindReverse(std::int32_t inStart, char inChar, std::uint32_t& outIndex) const {
    NvAssertText(inStart < static_cast<std::int64_t>(mLength), "index < (NvInt32)mLength");
    for (std::int32_t index = inStart; index >= 0; --index) {
        if (mTextPtr[index] == inChar) {
            outIndex = static_cast<std::uint32_t>(index);
            return true;
        }
    }
    return false;
}

NvString NvString::SubString(std::uint32_t inFirst, std::uint32_t inLast) const {
    NvAssert(inFirst <= inLast && inLast < mLength);
    return NvString(mTextPtr + inFirst, inLast - inFirst + 1);
}

void NvString::TrimLeft() {
    const char* end = mTextPtr + mLength;
    const char* first =
        std::find_if(static_cast<const char*>(mTextPtr), end, [](char inChar) { return inChar != ' '; });
    Replace(first, static_cast<std::uint32_t>(end - first));
}

void NvString::TrimRight() {
    std::uint32_t length = mLength;
    while (length > 0 && mTextPtr[length - 1] == ' ')
        --length;
    SetLength(length);
}

std::uint32_t NvString::NumberToText(std::uint32_t inNumber, char* outBufferPtr) {
    NvAssert(outBufferPtr);
    std::uint32_t count = 0;
    for (std::uint32_t divisor = 1000000000; divisor > 0; divisor /= 10) {
        const std::uint32_t digit = inNumber / divisor % 10;
        if (digit != 0 || count > 0 || divisor == 1)
            outBufferPtr[count++] = static_cast<char>('0' + digit);
    }
    return count;
}

std::uint32_t NvString::NumberToText(std::int32_t inNumber, char* outBufferPtr) {
    NvAssert(outBufferPtr);
    const auto number = static_cast<std::uint32_t>(inNumber);
    if (inNumber >= 0)
        return NumberToText(number, outBufferPtr);
    *outBufferPtr = '-';
    return 1 + NumberToText(0u - number, outBufferPtr + 1); // unsigned: the lowest number has no opposite
}

/** Gives the string a buffer for inLength characters, all 0, and returns the one it had. */
std::unique_ptr<unsigned char[]> NvString::Allocate(std::uint64_t inLength) {
    if (inLength > std::numeric_limits<std::uint32_t>::max())
        NvThrow(NvErrorCode::km_OutOfMemory);
    auto buffer = NvMakeArray<unsigned char>(inLength + 2);
    buffer[0] = static_cast<unsigned char>(std::min<std::uint64_t>(inLength, 255));
    mLength = static_cast<std::uint32_t>(inLength);
    mTextPtr = reinterpret_cast<char*>(buffer.get() + 1);
    NvAssert(mTextPtr);
    mBufferPtr.swap(buffer);
    return buffer;
}

void NvString::Resize(std::uint64_t inLength) {
    const std::uint64_t kept = std::min<std::uint64_t>(mLength, inLength);
    const std::unique_ptr<unsigned char[]> old = Allocate(inLength);
    std::copy_n(old.get() + 1, kept, mTextPtr);
}

/** Becomes a copy of a text, which may lie in the present buffer. */
void NvString::Replace(const char* inTextPtr, std::uint32_t inLength) {
    const std::unique_ptr<unsigned char[]> old = Allocate(inLength);
    std::copy_n(inTextPtr, inLength, mTextPtr);
}

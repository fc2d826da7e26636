#pragma once

#include <compare>
#include <cstdint>
#include <memory>

class NvStringResources;

/** An 8-bit string that serves readers of NUL-terminated and of length-prefixed text without conversion.
 *
 *  One buffer of exactly length + 2 bytes serves both: a length byte, the characters, a NUL. The text may be
 *  longer than 255 characters; its length byte then says 255. There is no spare capacity, so every change of
 *  length allocates. Indices count characters from 0. Every constructor and every operation that makes or
 *  resizes a string raises 2 when memory is short; the string is then unchanged.
 *
 *  The program's texts are loaded into it from its resources. What changes, searches and compares strings is
 *  for callers who put texts together in it. */
class NvString {
public:
    NvString();

    /** Precondition: inCString is not null. */
    explicit NvString(const char* inCString);

    /** From a length byte and that many characters. */
    explicit NvString(const unsigned char* inPString);

    /** Precondition: inTextPtr is not null, or inLength is 0. */
    NvString(const char* inTextPtr, std::uint32_t inLength);

    /** Decimal text, without leading zeros. */
    explicit NvString(std::uint32_t inNumber);
    explicit NvString(std::int32_t inNumber);

    /** Loads a string resource.
     *
     *  @param inModule      the program's own module; borrowed for the call
     *  @throws NvErrorCode  1 when inModule is null; 35 when there is no such text or it is empty, 2 when
     *                       finding it ran out of memory, both with the module's system error */
    NvString(const NvStringResources* inModule, std::uint32_t inStringID);

    NvString(const NvString& inString);
    NvString& operator=(const NvString& inString);
    virtual ~NvString() = default;

    std::uint32_t GetLength() const { return mLength; }

    /** The characters and a NUL; valid until the string changes. */
    const char* GetTextPtr() const;

    /** The length byte, the characters and a NUL; valid until the string changes. */
    const unsigned char* GetBufferPtr() const;

    /** Cuts the string, or lengthens it by characters of value 0. */
    void SetLength(std::uint32_t inLength);

    NvString operator+(const NvString& inString) const;
    NvString& operator+=(const NvString& inString);

    /** Compares bytewise, as unsigned numbers; with an equal beginning the longer string is greater.
     *  @return  negative, 0 or positive as this string is less than, equal to or greater than inString */
    std::int32_t Compare(const NvString& inString) const;

    /** The same for the first inNChars characters alone.
     *  Precondition: both strings have that many. */
    std::int32_t CompareN(const NvString& inString, std::uint32_t inNChars) const;

    /** All six relations follow Compare. */
    bool operator==(const NvString& inString) const { return Compare(inString) == 0; }
    std::strong_ordering operator<=>(const NvString& inString) const { return Compare(inString) <=> 0; }

    /** Change the ASCII letters in place. */
    void ToUpper();
    void ToLower();

    /** Sets the first inCount characters, or all, to inChar. Precondition: inCount <= GetLength(). */
    void Fill(std::uint32_t inCount, char inChar);
    void Fill(char inChar);

    /** Whether the string is empty or holds only spaces; the opposite. */
    bool IsBlank() const;
    bool HasNonBlank() const { return !IsBlank(); }

    /** Looks for inChar from inStart on, to the end.
     *  @param outIndex  set when found
     *  @return          whether it was found; never with a start beyond the last character */
    bool Find(std::uint32_t inStart, char inChar, std::uint32_t& outIndex) const;

    /** Looks for inChar from inStart back to the first character; a negative start finds nothing.
     *  Precondition: inStart < GetLength(). */
    bool FindReverse(std::int32_t inStart, char inChar, std::uint32_t& outIndex) const;

    /** The characters from inFirst to inLast, both included.
     *  Precondition: inFirst <= inLast && inLast < GetLength(). */
    NvString SubString(std::uint32_t inFirst, std::uint32_t inLast) const;

    /** Remove the spaces (and only spaces) at the beginning or end. */
    void TrimLeft();
    void TrimRight();

    /** Writes a number in decimal, without a NUL, to a buffer of at least 10 (signed: 11) bytes, not null.
     *  @return  characters written */
    static std::uint32_t NumberToText(std::uint32_t inNumber, char* outBufferPtr);
    static std::uint32_t NumberToText(std::int32_t inNumber, char* outBufferPtr);

private:
    std::unique_ptr<unsigned char[]> Allocate(std::uint64_t inLength);
    void Resize(std::uint64_t inLength);
    void Replace(const char* inTextPtr, std::uint32_t inLength);

    std::uint32_t mLength = 0;
    char* mTextPtr = nullptr; // one past mBufferPtr
    std::unique_ptr<unsigned char[]> mBufferPtr;
};

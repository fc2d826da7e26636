#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** Texts, paths and error numbers between the program and Windows. For sources named _win only.
 *
 *  The program's texts are UTF-8. They reach Windows through its UTF-16 functions, so that no name depends on
 *  a code page. */

/** Bytes that are not UTF-8 become U+FFFD, which no file name contains by accident. */
std::wstring NvWiden(std::string_view inText);
std::string NvNarrow(std::wstring_view inText);

/** The path as file functions take it at any length; plain ones may have 260 characters at most. A short path
 *  stays as given. */
std::wstring NvWidePath(std::string_view inPath);

/** The errno for an error number of Windows; EIO where there is none. */
int NvErrnoForWindows(std::uint32_t inWindowsError);

/** The same for the error of the last call. */
int NvLastErrno();

/** A handle of Windows, closed at the end of the scope. */
class NvWindowsHandle {
public:
    explicit NvWindowsHandle(void* inHandle) : mHandle(inHandle) {}
    ~NvWindowsHandle();
    NvWindowsHandle(const NvWindowsHandle&) = delete;
    NvWindowsHandle& operator=(const NvWindowsHandle&) = delete;

    bool IsValid() const;
    void* Get() const { return mHandle; }

private:
    void* mHandle;
};

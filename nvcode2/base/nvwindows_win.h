#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** Texts, paths and error numbers between the program and Windows. For sources named _win only.
 *
 *  The program's texts are UTF-8; Windows is asked through its UTF-16 functions, so that no name depends on a
 *  code page. */

/** What is no UTF-8 becomes U+FFFD, which no file has by accident. */
std::wstring NvWiden(std::string_view inText);
std::string NvNarrow(std::wstring_view inText);

/** The path as file functions take it: of any length, while plain ones end at 260 characters. Stays as it
 *  was given where it is short. */
std::wstring NvWidePath(std::string_view inPath);

/** The errno that says the same as an error number of Windows; EIO for those that have none. */
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

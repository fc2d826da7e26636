#pragma once

#include <memory>
#include <span>

/** Names a file by its full path: a NUL-terminated 8-bit string of any length, kept as given.
 *
 *  The path is split at its last separator, a backslash or a slash; what follows is the file's name. A name
 *  that contains a backslash, which some systems allow, therefore counts as a folder and a name.
 *
 *  The program sets whole paths. Reading and replacing the name alone, and clearing the path, are for
 * dialogs, which keep a folder while its files change. */
class NvFileLocator {
public:
    /** Names no file yet. */
    NvFileLocator() = default;

    /** Keeps a copy of inPath; nullptr names no file.
     *  @throws NvErrorCode  2 */
    explicit NvFileLocator(const char* inPath);

    NvFileLocator(const NvFileLocator& inLocator);
    NvFileLocator& operator=(const NvFileLocator& inLocator);
    NvFileLocator(NvFileLocator&&) noexcept = default;
    NvFileLocator& operator=(NvFileLocator&&) noexcept = default;
    ~NvFileLocator() = default;

    /** True when there is a path, even an empty one. */
    bool IsSpecified() const { return mIsSpecified && mPathStr; }

    /** The path, or nullptr; valid until the path changes. */
    const char* GetPath() const { return mPathStr.get(); }

    /** Replaces the path by a copy of inPath, which may point into the present one. nullptr names no file.
     *  @throws NvErrorCode  2; the path is then unchanged */
    void SetPath(const char* inPath);

    /** Afterwards it names no file. */
    void ClearPath();

    /** Copies the name after the last separator (the whole path without one) and its NUL to outFileName.
     *
     *  The name is empty when the path ends in a separator. It is never cut.
     *  Precondition: there is a path and it is not empty.
     *  @throws NvErrorCode  29 when the name and its NUL do not fit; outFileName is then unchanged */
    void GetFileName(std::span<char> outFileName) const;

    /** Replaces what follows the last separator by inFileName; the folder, separator included, stays.
     *
     *  Precondition: inFileName is not null; there is a path and it is not empty.
     *  @throws NvErrorCode  2; the path is then unchanged */
    void SetFileName(const char* inFileName);

private:
    bool mIsSpecified = false;
    std::unique_ptr<char[]> mPathStr; // NUL-terminated
};

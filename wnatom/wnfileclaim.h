#pragma once

#include <memory>
#include <string>

/** An exclusive claim on a file, visible to this user's other processes on this machine. It ends with the
 * object, and with the process however that ends; nothing is left behind. It holds for the name, links
 * resolved, so also while another file takes its place. */
class WnFileClaim {
public:
    /** @param inDataFolder  a folder that the processes share */
    WnFileClaim(const std::string& inDataFolder, const char* inPath);
    ~WnFileClaim();
    WnFileClaim(const WnFileClaim&) = delete;
    WnFileClaim& operator=(const WnFileClaim&) = delete;

    /** @return false when another process has it; true also when there is no way to know */
    bool IsMine() const { return mIsMine; }

private:
    struct Handle;

    std::unique_ptr<Handle> mHandle;
    bool mIsMine = true;
};

#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

/** Another process of this very program. Bytes sent to it arrive on its standard input, and what it writes on
 *  its standard output comes back. Writing to a pipe without a reader must be an ordinary error (SIGPIPE
 *  ignored) wherever one is used. */
class WnChild {
public:
    /** Starts it.
     *  @param inArguments   without the program's name
     *  @throws NvErrorCode  by the runtime's error number when it cannot be started */
    explicit WnChild(const std::vector<std::string>& inArguments);

    /** Closes both pipes, by which a child learns that it is to end, and waits for that. On Windows it is
     *  ended with this process, however that ends. */
    ~WnChild();
    WnChild(const WnChild&) = delete;
    WnChild& operator=(const WnChild&) = delete;

    /** Waits while the pipe is full. @return false when the child is gone */
    bool Send(const std::string& inBytes);

    /** What has come since the last call, without waiting; nothing once the child is gone. */
    std::optional<std::string> Receive();

    /** Returns when one of them has something to receive, or is gone, or after the time. */
    static void WaitForAny(std::span<const WnChild* const> inChildren, std::chrono::milliseconds inAtMost);

private:
    struct Process;

    std::unique_ptr<Process> mProcess;
};

/** The other side: the process that started this one as a WnChild. Nothing else may read the standard input
 *  or write to the standard output. */
class WnParent {
public:
    /** @return false when it is gone */
    static bool Send(const std::string& inBytes);

    /** Waits for bytes. @return none when the parent is gone */
    static std::string Receive();

    /** Whether Receive would return at once. */
    static bool HasMore();
};

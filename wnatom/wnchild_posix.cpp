#include "wnatom/wnchild.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "nvcode2/base/nverrorcode.h"

extern char** environ;

namespace {

/** An open descriptor that no other child inherits. */
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int inDescriptor) : mDescriptor(inDescriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void Set(int inDescriptor) { mDescriptor = inDescriptor; }
    int Get() const { return mDescriptor; }
    void Close() {
        if (mDescriptor >= 0)
            close(mDescriptor);
        mDescriptor = -1;
    }

private:
    int mDescriptor = -1;
};

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            ThrowRuntimeError(errno);
        mRead.Set(ends[0]);
        mWrite.Set(ends[1]);
    }

    Descriptor mRead, mWrite;
};

/** What a new process finds at its standard streams. */
class SpawnActions {
public:
    SpawnActions() { posix_spawn_file_actions_init(&mActions); }
    ~SpawnActions() { posix_spawn_file_actions_destroy(&mActions); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void Place(const Descriptor& inDescriptor, int inAt) {
        posix_spawn_file_actions_adddup2(&mActions, inDescriptor.Get(), inAt);
    }
    const posix_spawn_file_actions_t* Get() const { return &mActions; }

private:
    posix_spawn_file_actions_t mActions{};
};

bool WriteAll(int inDescriptor, const std::string& inBytes) {
    for (std::size_t at = 0; at < inBytes.size();) {
        const ssize_t written = write(inDescriptor, inBytes.data() + at, inBytes.size() - at);
        if (written < 0 && errno != EINTR)
            return false;
        at += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
    return true;
}

/** Waits for bytes. @return none at the end, or when they cannot be read */
std::string ReadSome(int inDescriptor) {
    std::array<char, 16 * 1024> buffer{};
    for (;;) {
        const ssize_t size = read(inDescriptor, buffer.data(), buffer.size());
        if (size >= 0 || errno != EINTR)
            return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }
}

bool IsReadable(int inDescriptor) {
    pollfd descriptor = {inDescriptor, POLLIN, 0};
    return poll(&descriptor, 1, 0) > 0;
}

} // namespace

struct WnChild::Process {
    Pipe mToChild, mFromChild;
    pid_t mId = 0;
};

WnChild::WnChild(const std::vector<std::string>& inArguments) : mProcess(std::make_unique<Process>()) {
    std::vector<std::string> arguments = {"parvigif"};
    arguments.insert(arguments.end(), inArguments.begin(), inArguments.end());
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    SpawnActions actions;
    actions.Place(mProcess->mToChild.mRead, STDIN_FILENO);
    actions.Place(mProcess->mFromChild.mWrite, STDOUT_FILENO);
    const int error =
        posix_spawn(&mProcess->mId, "/proc/self/exe", actions.Get(), nullptr, pointers.data(), environ);
    if (error != 0)
        ThrowRuntimeError(error);
    mProcess->mToChild.mRead.Close();
    mProcess->mFromChild.mWrite.Close();
}

WnChild::~WnChild() {
    mProcess->mToChild.mWrite.Close();
    mProcess->mFromChild.mRead.Close();
    while (waitpid(mProcess->mId, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool WnChild::Send(const std::string& inBytes) {
    return WriteAll(mProcess->mToChild.mWrite.Get(), inBytes);
}

std::optional<std::string> WnChild::Receive() {
    const int descriptor = mProcess->mFromChild.mRead.Get();
    if (!IsReadable(descriptor))
        return std::string();
    std::string bytes = ReadSome(descriptor);
    return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

void WnChild::WaitForAny(std::span<const WnChild* const> inChildren, std::chrono::milliseconds inAtMost) {
    std::vector<pollfd> descriptors;
    for (const WnChild* child : inChildren)
        descriptors.push_back({child->mProcess->mFromChild.mRead.Get(), POLLIN, 0});
    poll(descriptors.data(), descriptors.size(), static_cast<int>(inAtMost.count()));
}

bool WnParent::Send(const std::string& inBytes) {
    return WriteAll(STDOUT_FILENO, inBytes);
}

std::string WnParent::Receive() {
    return ReadSome(STDIN_FILENO);
}

bool WnParent::HasMore() {
    return IsReadable(STDIN_FILENO);
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/** What the fuzz targets share. */

/** Called by the fuzzer with each input. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize);

/** Stops the fuzzer, which then keeps the input. */
inline void Require(bool inCondition, const char* inWhat) {
    if (inCondition)
        return;
    std::fprintf(stderr, "not so: %s\n", inWhat);
    std::abort();
}

/** A file in memory that has a path, since the library opens files by path. */
class MemoryFile {
public:
    MemoryFile() : mDescriptor(memfd_create("fuzz", 0)) { Require(mDescriptor != -1, "memfd_create"); }
    ~MemoryFile() { close(mDescriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string GetPath() const { return "/proc/self/fd/" + std::to_string(mDescriptor); }

    void SetBytes(const std::uint8_t* inData, std::size_t inSize) {
        Require(ftruncate(mDescriptor, 0) == 0 &&
                    pwrite(mDescriptor, inData, inSize, 0) == static_cast<ssize_t>(inSize),
                "the input was stored");
    }

private:
    int mDescriptor;
};

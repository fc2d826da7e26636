// Loaded before the C library, this lets the program's n-th allocation fail: PARVIGIF_ALLOC=n, counted from
// its first look at a file. PARVIGIF_COUNT names a file that is given the number of allocations at the end.

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(size_t inSize);
void* __libc_realloc(void* inBlock, size_t inSize);
}

namespace {

bool s_isArmed = false;
long s_count = 0;
long s_at = 0;

bool IsHit() {
    return s_isArmed && ++s_count == s_at;
}

__attribute__((destructor)) void ReportCount() {
    s_isArmed = false;
    const char* path = std::getenv("PARVIGIF_COUNT");
    std::FILE* const file = path ? std::fopen(path, "w") : nullptr;
    if (!file)
        return;
    std::fprintf(file, "%ld", s_count);
    std::fclose(file);
}

} // namespace

extern "C" {

void* malloc(size_t inSize) {
    return IsHit() ? nullptr : __libc_malloc(inSize);
}

void* realloc(void* inBlock, size_t inSize) {
    return IsHit() ? nullptr : __libc_realloc(inBlock, inSize);
}

int stat(const char* inPath, struct stat* outStatus) {
    if (const char* at = std::getenv("PARVIGIF_ALLOC"); at && !s_isArmed) {
        s_at = std::strtol(at, nullptr, 10);
        s_isArmed = true;
    }
    return fstatat(AT_FDCWD, inPath, outStatus, 0);
}

} // extern "C"

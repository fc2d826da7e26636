#include "wnatom/wnsystem.h"

#include <algorithm>
#include <system_error>

std::uint64_t WnGetUsualMemoryLimit() {
    constexpr std::uint64_t km_AtLeast = std::uint64_t{1} << 30;
    return std::max(WnGetPhysicalMemory() / 2, km_AtLeast);
}

std::string WnGetFullPath(const std::string& inPath) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(WnMakePath(inPath), error);
    if (error)
        return inPath;
    const std::u8string text = path.lexically_normal().u8string();
    return {text.begin(), text.end()};
}

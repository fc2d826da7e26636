#include "wnatom/wnfolders_posix.h"

#include <cstdlib>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

std::string WnGetPathFromEnvironment(const char* inVariable) {
    const char* value = std::getenv(inVariable);
    return value && value[0] == '/' ? value : std::string();
}

std::string WnGetHomeFolder() {
    if (std::string home = WnGetPathFromEnvironment("HOME"); !home.empty())
        return home;
    const passwd* entry = getpwuid(getuid());
    return entry && entry->pw_dir && entry->pw_dir[0] == '/' ? entry->pw_dir : "/";
}

std::string WnGetTemporaryFolder() {
    const std::string folder = WnGetPathFromEnvironment("TMPDIR");
    return folder.empty() ? "/tmp" : folder;
}

bool WnMakeFolders(const std::string& inPath) {
    // Each may exist, or be beyond our rights, without harm: only what is there in the end counts.
    for (std::size_t end = inPath.find('/', 1); end != std::string::npos; end = inPath.find('/', end + 1))
        mkdir(inPath.substr(0, end).c_str(), S_IRWXU);
    mkdir(inPath.c_str(), S_IRWXU);
    struct stat status {};
    return stat(inPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string WnGetFolderOf(const std::string& inPath) {
    const std::size_t slash = inPath.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : inPath.substr(0, slash);
}

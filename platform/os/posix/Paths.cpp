#include <halvane/os/Paths.h>

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace halvane::os {

namespace {

std::string withoutTrailingSeparators(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

std::string homeFromUserDatabase() {
    long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(suggested > 0 ? size_t(suggested) : 16384);
    passwd entry;
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
        found->pw_dir == nullptr) {
        return std::string();
    }
    return found->pw_dir;
}

}  // namespace

std::string HomeDirectoryPath() {
    const char* home = std::getenv("HOME");
    return withoutTrailingSeparators(home != nullptr && *home != '\0' ? std::string(home) : homeFromUserDatabase());
}

}  // namespace halvane::os

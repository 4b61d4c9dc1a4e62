#include <halvane/os/Process.h>

#include <climits>
#include <unistd.h>

namespace halvane::os {

std::string ExecutablePath() {
    char path[PATH_MAX];
    ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0) return std::string();
    return std::string(path, size_t(length));
}

}  // namespace halvane::os

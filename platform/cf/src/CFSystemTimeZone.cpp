// Where the machine's time zone is named: the environment, the
// /etc/localtime link, the C library.
#include "CFTimeZoneInternal.h"

#include <unistd.h>

#include <cstdlib>
#include <ctime>

namespace halvane::detail {

namespace {

constexpr const char* kLocaltimeLink = "/etc/localtime";

// A path names a zone by where it lies in a zoneinfo directory; any other
// text is a zone name already.
std::optional<std::string> zoneNameFromSetting(const std::string& setting) {
    if (setting.empty()) return std::nullopt;
    if (setting.front() != '/') return setting;
    if (auto name = zoneNameFromZoneinfoPath(setting)) return name;
    // A link placed elsewhere may still lead into the zoneinfo directory.
    if (char* resolved = realpath(setting.c_str(), nullptr)) {
        std::string target = resolved;
        std::free(resolved);
        return zoneNameFromZoneinfoPath(target);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> zoneNameFromZoneinfoPath(const std::string& path) {
    constexpr std::string_view kDirectory = "zoneinfo/";
    size_t at = path.rfind(kDirectory);
    if (at == std::string::npos || (at > 0 && path[at - 1] != '/')) return std::nullopt;
    std::string name = path.substr(at + kDirectory.size());
    // The "posix" and "right" trees hold the same zones with other leap
    // second handling.
    for (std::string_view tree : {"posix/", "right/"}) {
        if (name.starts_with(tree)) name.erase(0, tree.size());
    }
    if (name.empty() || name.back() == '/') return std::nullopt;
    return name;
}

std::optional<std::string> zoneNameFromLocaltimeLink(const char* linkPath) {
    char target[4096];
    ssize_t length = readlink(linkPath, target, sizeof target - 1);
    if (length <= 0) return std::nullopt;
    return zoneNameFromZoneinfoPath(std::string(target, size_t(length)));
}

std::vector<ZoneNameCandidate> systemZoneNameCandidates() {
    std::vector<ZoneNameCandidate> candidates;
    if (const char* tzfile = std::getenv("TZFILE")) {
        if (auto name = zoneNameFromSetting(tzfile)) candidates.push_back({*name, false});
    }
    if (const char* tz = std::getenv("TZ")) {
        std::string setting = tz;
        if (setting.starts_with(':')) setting.erase(0, 1);
        if (setting.empty()) {
            // A TZ that is set but empty means UTC to the C library.
            candidates.push_back({"UTC", false});
        } else if (auto name = zoneNameFromSetting(setting)) {
            candidates.push_back({*name, setting.front() != '/'});
        }
    }
    if (auto name = zoneNameFromLocaltimeLink(kLocaltimeLink)) candidates.push_back({*name, false});
    tzset();
    if (tzname[0] != nullptr && tzname[0][0] != '\0') candidates.push_back({tzname[0], true});
    return candidates;
}

}  // namespace halvane::detail

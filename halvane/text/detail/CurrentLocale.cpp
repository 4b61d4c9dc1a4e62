#include <halvane/text/detail/CurrentLocale.h>

#include <algorithm>
#include <cstdlib>

namespace halvane::detail {

// Until the platform layer offers its current locale, the environment is
// read the way that layer reads it: LC_ALL, LC_MESSAGES, LANG; the codeset
// and modifier dropped; C, POSIX or nothing set meaning en_US.
std::string currentLocaleIdentifier() {
    std::string identifier;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            identifier = value;
            break;
        }
    }
    identifier.erase(std::min(identifier.find_first_of(".@"), identifier.size()));
    if (identifier.empty() || identifier == "C" || identifier == "POSIX") return "en_US";
    return identifier;
}

}  // namespace halvane::detail

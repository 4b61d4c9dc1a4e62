// The current locale as the POSIX environment states it.
#include "CFInternal.h"

#include <algorithm>
#include <cstdlib>

namespace halvane::detail {

std::string currentLocaleIdentifier(LocaleCategory category) {
    const char* categoryVariable = category == LocaleCategory::kCollation ? "LC_COLLATE" : "LC_MESSAGES";
    std::string identifier;
    for (const char* variable : {"LC_ALL", categoryVariable, "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') {
            identifier = value;
            break;
        }
    }
    // "de_DE.UTF-8@euro" names the locale "de_DE".
    identifier.erase(std::min(identifier.find_first_of(".@"), identifier.size()));
    if (identifier.empty() || identifier == "C" || identifier == "POSIX") return "en_US";
    return identifier;
}

}  // namespace halvane::detail

// The identifier of the user's current locale ("de_DE"), as the platform's
// locale layer names it.
#ifndef HALVANE_TEXT_DETAIL_CURRENTLOCALE_H
#define HALVANE_TEXT_DETAIL_CURRENTLOCALE_H

#include <string>

namespace halvane::detail {

// Read on every call, so a change of the user's settings applies at once.
std::string currentLocaleIdentifier();

}  // namespace halvane::detail

#endif  // HALVANE_TEXT_DETAIL_CURRENTLOCALE_H

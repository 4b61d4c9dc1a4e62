#include <halvane/os/UUID.h>

#include <uuid/uuid.h>

namespace halvane::os {

std::string CreateSequentialUUIDString() {
    uuid_t value;
    uuid_generate_time(value);
    char text[37];
    uuid_unparse_lower(value, text);
    return std::string(text);
}

}  // namespace halvane::os

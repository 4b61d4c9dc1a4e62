// The platform runtime class of retained-object containers.
#ifndef HALVANE_CORE_DETAIL_RETAINEDOBJECTCLASS_H
#define HALVANE_CORE_DETAIL_RETAINEDOBJECTCLASS_H

#include <CoreFoundation/CFBase.h>

namespace halvane::detail {

// The type ID that the class received when the library was loaded (256:
// no other client class is registered before it).
CFTypeID RetainedObjectTypeID();

}  // namespace halvane::detail

#endif  // HALVANE_CORE_DETAIL_RETAINEDOBJECTCLASS_H

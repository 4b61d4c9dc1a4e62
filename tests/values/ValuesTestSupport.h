// Helpers shared by the value-class tests.
#ifndef HALVANE_TESTS_VALUES_VALUESTESTSUPPORT_H
#define HALVANE_TESTS_VALUES_VALUESTESTSUPPORT_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

namespace hvtest {

// Exposes the protected class-type machinery of HVObject.
class ObjectProbe : public HVObject {
public:
    using HVObject::CreateObjectOfClassType;
};

// What the tagged-text reader does with a class type and a payload: a new
// wrapper made from a null reference, then given the payload to read.
inline std::shared_ptr<HVObject> rebuilt(HVClassType type, const HVString& payload) {
    std::shared_ptr<HVObject> object = ObjectProbe::CreateObjectOfClassType(nullptr, type);
    if (object) object->Deserialize(payload);
    return object;
}

// The platform number type the object holds (0 for anything else).
inline CFNumberType numberTypeOf(const HVObject& object) {
    CFTypeRef ref = object.Ref();
    if (ref == nullptr || CFGetTypeID(ref) != CFNumberGetTypeID()) return CFNumberType(0);
    return CFNumberGetType(static_cast<CFNumberRef>(ref));
}

}  // namespace hvtest

#endif  // HALVANE_TESTS_VALUES_VALUESTESTSUPPORT_H

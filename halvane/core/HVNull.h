// HVNull: the wrapper of the platform's null object. It is always null,
// whatever it was made from, and stands for "no value" inside collections.
#ifndef HALVANE_CORE_HVNULL_H
#define HALVANE_CORE_HVNULL_H

#include <halvane/core/HVObject.h>

class HV_EXPORT HVNull : public HVObject {
public:
    HVNull();
    HVNull(const HVNull& other);
    // The reference is ignored: the result holds the null object.
    HVNull(const void* const& ref);

    static HVClassType ClassType();
    // The platform's null object.
    static const void* const& SharedEmptyObject();

    bool IsNull() const override;
    // "<null>".
    HVString Serialize() override;
    // Accepts only "<null>" (anything else is reported); the object is
    // unchanged either way.
    void Deserialize(const HVString& text) override;
};

#endif  // HALVANE_CORE_HVNULL_H

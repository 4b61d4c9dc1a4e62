// HVSerialization: the small text interface shared by the plain geometry
// values, which are not HVObjects but travel through the same tagged text.
#ifndef HALVANE_VALUES_HVSERIALIZATION_H
#define HALVANE_VALUES_HVSERIALIZATION_H

#include <halvane/core/HVExport.h>

class HVString;

class HV_EXPORT HVSerialization {
public:
    // In this order in every derived value.
    virtual HVString Serialize() const = 0;
    virtual void Deserialize(const HVString& text) = 0;
    virtual ~HVSerialization();

protected:
    HVSerialization() = default;
    HVSerialization(const HVSerialization&) = default;
    HVSerialization& operator=(const HVSerialization&) = default;
};

#endif  // HALVANE_VALUES_HVSERIALIZATION_H

// HVArray: the immutable ordered collection, over a CoreFoundation array
// whose elements are retained.
#ifndef HALVANE_COLLECTIONS_HVARRAY_H
#define HALVANE_COLLECTIONS_HVARRAY_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVRange.h>

struct __CFArray;

class HV_EXPORT HVArray : public HVObject {
public:
    HVArray();
    HVArray(const HVArray& other);
    HVArray(const void* const& ref);
    HVArray(const __CFArray* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    unsigned long long Count() const;
    bool IsEmpty() const override;

protected:
    HVArray(const void* const& ref, HVClassType type);
    void AssignUnderlyingArray(const void* ref);
    void AssignUnderlyingArrayAndTakeOwnership(const void* ref);
};

#endif  // HALVANE_COLLECTIONS_HVARRAY_H

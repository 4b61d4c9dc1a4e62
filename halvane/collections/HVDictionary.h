// HVDictionary: the immutable keyed collection, over a CoreFoundation
// dictionary with string keys; keys and values are retained.
#ifndef HALVANE_COLLECTIONS_HVDICTIONARY_H
#define HALVANE_COLLECTIONS_HVDICTIONARY_H

#include <halvane/core/HVObject.h>

struct __CFDictionary;

class HV_EXPORT HVDictionary : public HVObject {
public:
    HVDictionary();
    HVDictionary(const HVDictionary& other);
    HVDictionary(const void* const& ref);
    HVDictionary(const __CFDictionary* ref);

    static HVClassType ClassType();
    static const void* const& SharedEmptyObject();

    unsigned long long Count() const;
    bool IsEmpty() const override;

protected:
    HVDictionary(const void* const& ref, HVClassType type);
    void AssignUnderlyingDictionary(const void* ref);
    void AssignUnderlyingDictionaryAndTakeOwnership(const void* ref);
};

#endif  // HALVANE_COLLECTIONS_HVDICTIONARY_H

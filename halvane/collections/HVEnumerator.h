// HVEnumerator: walks an array from front to back. It holds the array
// (retained) and the index of the next element; at the end it keeps
// answering "nothing".
#ifndef HALVANE_COLLECTIONS_HVENUMERATOR_H
#define HALVANE_COLLECTIONS_HVENUMERATOR_H

#include <halvane/collections/HVArray.h>

class HV_EXPORT HVEnumerator : public HVObject {
public:
    // Holds no array.
    HVEnumerator();
    HVEnumerator(const HVEnumerator& other);
    HVEnumerator(const HVArray& array);
    HVEnumerator(const void* const& ref);

    static HVClassType ClassType();
    // Null: an enumerator without an array.
    static const void* const& SharedEmptyObject();

    HVEnumerator& operator=(const HVEnumerator& other);

    // The next element, or an object holding no reference at the end.
    HVObject NextObject();
    // The next element as a string (an element of another kind is reported
    // and comes back empty), or a string holding no reference at the end.
    HVString NextStringObject();
    // The whole array, whatever the position.
    HVArray AllObjects() const;

    bool IsEmpty() const override;
    // Drops the array and starts again at the front.
    void Empty() override;

private:
    unsigned long long m_Position;
};

#endif  // HALVANE_COLLECTIONS_HVENUMERATOR_H

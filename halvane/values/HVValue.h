// HVValue: one plain C value (an integer of any width, a floating value, a
// flag or a pointer) boxed so that collections and property lists can carry
// it: an immutable three-element array holding the marker
// "HVValue_Container_AX7", the C type name and a number with the value.
#ifndef HALVANE_VALUES_HVVALUE_H
#define HALVANE_VALUES_HVVALUE_H

#include <halvane/core/HVObject.h>
#include <halvane/text/HVString.h>

struct __CFArray;

class HV_EXPORT HVValue : public HVObject {
public:
    HVValue();
    HVValue(const HVValue& other);
    // Shares whatever the object holds, without conversion or check.
    HVValue(const HVObject& object);
    HVValue(const void* const& ref);
    HVValue(const __CFArray* ref);

    static HVClassType ClassType();
    // The container of an int 0, made once.
    static const void* const& SharedEmptyObject();

    // The C type names understood: "int", "unsigned int", "const void*",
    // "void*", "long", "unsigned long", "long long", "unsigned long long",
    // "short", "unsigned short", "char", "unsigned char", "double", "float"
    // and "bool", spelled exactly so. Any other name (or no bytes) gives the
    // empty value.
    static HVValue ValueWithBytesOfCType(const void* bytes, const HVString& cType);
    static HVValue ValueWithPointer(const void* pointer);
    static HVValue ValueFromObject(const HVObject& object);

    void InitWithBytesOfCType(const void* bytes, const HVString& cType);
    void InitWithPointer(const void* pointer);

    // Writes the value to buffer as its C type; the buffer must have room
    // for that type. Nothing is written when the value holds no container.
    void GetValue(void* buffer) const;
    void* PointerValue() const;
    // The C type name; the null string when the value holds no container.
    HVString CType() const;

    HVValue& operator=(const HVValue& other);
    operator const __CFArray*() const;

    // The container's array text.
    HVString Serialize() override;
    // Reads the container's array text (with or without its property-list
    // frame) and rebuilds the value from the type name and the number in
    // it. Text that holds no such array leaves the value as it was.
    void Deserialize(const HVString& text) override;

private:
    void AssignUnderlyingValueAndTakeOwnership(const void* ref);
};

#endif  // HALVANE_VALUES_HVVALUE_H

// HVBool: the library's boolean value, over a CoreFoundation boolean. An
// empty HVBool holds a number 0 of its own, not the false boolean, so that
// "no value" and "false" can be told apart; both read as false.
#ifndef HALVANE_VALUES_HVBOOL_H
#define HALVANE_VALUES_HVBOOL_H

#include <halvane/core/HVObject.h>

struct __CFBoolean;

class HV_EXPORT HVBool : public HVObject {
public:
    HVBool();
    HVBool(const HVBool& other);
    HVBool(const __CFBoolean* ref);
    HVBool(bool value);
    // The integer forms are true when the value is non-zero.
    HVBool(char value);
    HVBool(unsigned char value);
    HVBool(short value);
    HVBool(unsigned short value);
    HVBool(int value);
    HVBool(unsigned int value);
    HVBool(long value);
    HVBool(unsigned long value);

    static HVClassType ClassType();
    // A number 0 (kCFNumberSInt8Type), deliberately not kCFBooleanFalse.
    static const void* const& SharedEmptyObject();

    static HVBool True();
    static HVBool Yes();
    static HVBool False();
    static HVBool No();

    static HVBool BoolFromObject(const HVObject& object);
    static HVBool BoolFromId(const void* const& ref);

    HVBool& operator=(const HVBool& other);
    HVBool& operator=(const __CFBoolean* ref);
    HVBool& operator=(bool value);
    HVBool& operator=(char value);
    HVBool& operator=(unsigned char value);
    HVBool& operator=(short value);
    HVBool& operator=(unsigned short value);
    HVBool& operator=(int value);
    HVBool& operator=(unsigned int value);
    HVBool& operator=(long value);
    HVBool& operator=(unsigned long value);
    // Converts: a boolean is shared, a number reads as its BoolValue(), a
    // string is true when it is "true" or "YES" in any letter case; a null
    // object makes this value null; anything else is false.
    HVBool& operator=(const HVObject& object);

    // False when null; true exactly when the held object is kCFBooleanTrue.
    operator bool() const;
    bool operator!() const;
    operator const __CFBoolean*() const;

    bool operator==(const HVBool& other) const;
    bool operator!=(const HVBool& other) const;
    bool operator==(bool value) const;
    bool operator!=(bool value) const;
    bool operator==(char value) const;
    bool operator!=(char value) const;
    bool operator==(unsigned char value) const;
    bool operator!=(unsigned char value) const;
    bool operator==(short value) const;
    bool operator!=(short value) const;
    bool operator==(unsigned short value) const;
    bool operator!=(unsigned short value) const;
    bool operator==(int value) const;
    bool operator!=(int value) const;
    bool operator==(unsigned int value) const;
    bool operator!=(unsigned int value) const;
    bool operator==(long value) const;
    bool operator!=(long value) const;
    bool operator==(unsigned long value) const;
    bool operator!=(unsigned long value) const;

    // "YES" or "NO".
    HVString Serialize() override;
    void Deserialize(const HVString& text) override;
    bool IsNativelyAllowedInPropertyList() const override;

protected:
    // Converts whatever ref holds by operator=(const HVObject&).
    HVBool(const void* const& ref);
    HVBool(const HVObject& object);

private:
    void AssignBoolean(bool value);

    template <typename T>
    friend struct halvane::detail::WrapperFactory;
};

#endif  // HALVANE_VALUES_HVBOOL_H

// HVNumber: the library's numeric value, over a CoreFoundation number. Each
// source type keeps its own number type code, unsigned ones included, so a
// value always reads back exactly through the getter of its width.
#ifndef HALVANE_VALUES_HVNUMBER_H
#define HALVANE_VALUES_HVNUMBER_H

#include <halvane/core/HVObject.h>
#include <halvane/values/HVBool.h>

struct __CFNumber;

class HV_EXPORT HVNumber : public HVObject {
public:
    HVNumber();
    HVNumber(const HVNumber& other);
    HVNumber(const void* const& ref);
    HVNumber(const __CFNumber* ref);
    // Shares whatever the object holds, without conversion or check: a
    // number made from a string holds that string.
    HVNumber(const HVObject& object);
    // A char number (code 7) of 1 or 0, not a boolean.
    HVNumber(bool value);
    HVNumber(const HVBool& value);
    HVNumber(char value);                // code 7
    HVNumber(unsigned char value);       // code 39
    HVNumber(short value);               // code 8
    HVNumber(unsigned short value);      // code 40
    HVNumber(int value);                 // code 9
    HVNumber(unsigned int value);        // code 41
    HVNumber(long value);                // code 10
    HVNumber(unsigned long value);       // code 42
    HVNumber(long long value);           // code 11
    HVNumber(unsigned long long value);  // code 43
    HVNumber(float value);               // code 12
    HVNumber(double value);              // code 13

    static HVClassType ClassType();
    // An int number 0, made once. Emptiness is by identity with it: a 0
    // made elsewhere is not empty.
    static const void* const& SharedEmptyObject();

    static HVNumber NumberFromId(const void* const& ref);
    static HVNumber NumberFromObject(const HVObject& object);
    static HVNumber NumberWithBool(bool value);
    static HVNumber NumberWithChar(char value);
    static HVNumber NumberWithUnsignedChar(unsigned char value);
    static HVNumber NumberWithShort(short value);
    static HVNumber NumberWithUnsignedShort(unsigned short value);
    static HVNumber NumberWithInt(int value);
    static HVNumber NumberWithUnsignedInt(unsigned int value);
    static HVNumber NumberWithLong(long value);
    static HVNumber NumberWithUnsignedLong(unsigned long value);
    static HVNumber NumberWithLongLong(long long value);
    static HVNumber NumberWithUnsignedLongLong(unsigned long long value);
    static HVNumber NumberWithFloat(float value);
    static HVNumber NumberWithDouble(double value);

    HVNumber& operator=(const HVNumber& other);
    // The general assignment rule of HVObject: numbers are shared, foreign
    // objects refused.
    HVNumber& operator=(const HVObject& object);
    HVNumber& operator=(const __CFNumber* ref);
    HVNumber& operator=(bool value);
    HVNumber& operator=(const HVBool& value);
    HVNumber& operator=(char value);
    HVNumber& operator=(unsigned char value);
    HVNumber& operator=(short value);
    HVNumber& operator=(unsigned short value);
    HVNumber& operator=(int value);
    HVNumber& operator=(unsigned int value);
    HVNumber& operator=(long value);
    HVNumber& operator=(unsigned long value);
    HVNumber& operator=(long long value);
    HVNumber& operator=(unsigned long long value);
    HVNumber& operator=(float value);
    HVNumber& operator=(double value);

    // 0 for an empty number; otherwise the platform's conversion from the
    // stored type. Unsigned getters read the signed type of their width and
    // take its bits as unsigned.
    char CharValue() const;
    unsigned char UnsignedCharValue() const;
    short ShortValue() const;
    unsigned short UnsignedShortValue() const;
    int IntValue() const;
    unsigned int UnsignedIntValue() const;
    long LongValue() const;
    unsigned long UnsignedLongValue() const;
    long long IntegerValue() const;
    long long LongLongValue() const;
    unsigned long long UIntegerValue() const;
    unsigned long long UnsignedLongLongValue() const;
    float FloatValue() const;
    double DoubleValue() const;
    bool boolValue() const;
    // Empty for an empty number; otherwise Yes() when IntValue() is non-zero.
    HVBool BoolValue() const;
    bool IsFloatType() const;

    operator const __CFNumber*() const;

    // Two empty numbers are equal, an empty and a non-empty one are not;
    // otherwise the platform's equality (1 equals 1.0).
    bool operator==(const HVNumber& other) const;
    bool operator!=(const HVNumber& other) const;
    // Against a scalar: the getter of that type compared with the value.
    bool operator==(bool value) const;
    bool operator!=(bool value) const;
    bool operator==(const HVBool& value) const;
    bool operator!=(const HVBool& value) const;
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
    bool operator==(long long value) const;
    bool operator!=(long long value) const;
    bool operator==(unsigned long long value) const;
    bool operator!=(unsigned long long value) const;
    bool operator==(float value) const;
    bool operator!=(float value) const;
    bool operator==(double value) const;
    bool operator!=(double value) const;

    bool IsNativelyAllowedInPropertyList() const override;
    // The double value rounded to a whole number ("%1.0f"): fractions are
    // not kept.
    HVString Serialize() override;
    // Reads the text as a double number (0 when it holds none).
    void Deserialize(const HVString& text) override;

protected:
    void AssignUnderlyingNumberAndTakeOwnership(const void* ref);

private:
    bool HoldsNoNumber() const;
    void AssignNewNumber(int typeCode, const void* value);
};

#endif  // HALVANE_VALUES_HVNUMBER_H

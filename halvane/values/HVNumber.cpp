#include <halvane/values/HVNumber.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVNumber);

namespace {

// A new number (+1), or null when the platform cannot make one.
const void* newNumber(CFNumberType type, const void* value) {
    return CFNumberCreate(kCFAllocatorDefault, type, value);
}

// The held number converted by the platform to the given type.
template <typename T>
T valueOf(const void* ref, CFNumberType type) {
    T value{};
    CFNumberGetValue(static_cast<CFNumberRef>(ref), type, &value);
    return value;
}

}  // namespace

// Construction. The scalar forms make a number of their own type code and
// take it over.

HVNumber::HVNumber() : HVObject(SharedEmptyObject(), HVNumberClassType) {}

HVNumber::HVNumber(const HVNumber& other) : HVObject(other, HVNumberClassType) {}

HVNumber::HVNumber(const void* const& ref) : HVObject(ref, HVNumberClassType) {}

HVNumber::HVNumber(const __CFNumber* ref) : HVObject(static_cast<const void*>(ref), HVNumberClassType) {}

HVNumber::HVNumber(const HVObject& object) : HVObject(object, HVNumberClassType) {}

#define HV_NUMBER_CONSTRUCTOR(Type, code)                                   \
    HVNumber::HVNumber(Type value) : HVObject(nullptr, HVNumberClassType) { \
        m_Ref = newNumber(code, &value);                                    \
    }

HV_NUMBER_CONSTRUCTOR(char, kCFNumberCharType)
HV_NUMBER_CONSTRUCTOR(unsigned char, kCFNumberUInt8Type)
HV_NUMBER_CONSTRUCTOR(short, kCFNumberShortType)
HV_NUMBER_CONSTRUCTOR(unsigned short, kCFNumberUInt16Type)
HV_NUMBER_CONSTRUCTOR(int, kCFNumberIntType)
HV_NUMBER_CONSTRUCTOR(unsigned int, kCFNumberUInt32Type)
HV_NUMBER_CONSTRUCTOR(long, kCFNumberLongType)
HV_NUMBER_CONSTRUCTOR(unsigned long, kCFNumberULongType)
HV_NUMBER_CONSTRUCTOR(long long, kCFNumberLongLongType)
HV_NUMBER_CONSTRUCTOR(unsigned long long, kCFNumberUInt64Type)
HV_NUMBER_CONSTRUCTOR(float, kCFNumberFloatType)
HV_NUMBER_CONSTRUCTOR(double, kCFNumberDoubleType)

#undef HV_NUMBER_CONSTRUCTOR

HVNumber::HVNumber(bool value) : HVNumber(char(value ? 1 : 0)) {}

HVNumber::HVNumber(const HVBool& value) : HVNumber(bool(value)) {}

HVClassType HVNumber::ClassType() {
    return HVNumberClassType;
}

const void* const& HVNumber::SharedEmptyObject() {
    static const void* const empty = [] {
        int zero = 0;
        return newNumber(kCFNumberIntType, &zero);
    }();
    return empty;
}

HVNumber HVNumber::NumberFromId(const void* const& ref) {
    return HVNumber(ref);
}
HVNumber HVNumber::NumberFromObject(const HVObject& object) {
    return HVNumber(object);
}
HVNumber HVNumber::NumberWithBool(bool value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithChar(char value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithUnsignedChar(unsigned char value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithShort(short value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithUnsignedShort(unsigned short value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithInt(int value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithUnsignedInt(unsigned int value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithLong(long value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithUnsignedLong(unsigned long value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithLongLong(long long value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithUnsignedLongLong(unsigned long long value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithFloat(float value) {
    return HVNumber(value);
}
HVNumber HVNumber::NumberWithDouble(double value) {
    return HVNumber(value);
}

// Assignment.

void HVNumber::AssignUnderlyingNumberAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, HVNumberClassType);
}

void HVNumber::AssignNewNumber(int typeCode, const void* value) {
    AssignUnderlyingNumberAndTakeOwnership(newNumber(CFNumberType(typeCode), value));
}

HVNumber& HVNumber::operator=(const HVNumber& other) {
    HVObject::operator=(other);
    return *this;
}

HVNumber& HVNumber::operator=(const HVObject& object) {
    HVObject::operator=(object);
    return *this;
}

HVNumber& HVNumber::operator=(const __CFNumber* ref) {
    AssignUsingClassType(ref, HVNumberClassType);
    return *this;
}

HVNumber& HVNumber::operator=(bool value) {
    return operator=(char(value ? 1 : 0));
}

HVNumber& HVNumber::operator=(const HVBool& value) {
    return operator=(bool(value));
}

#define HV_NUMBER_ASSIGNMENT(Type, code)        \
    HVNumber& HVNumber::operator=(Type value) { \
        AssignNewNumber(code, &value);          \
        return *this;                           \
    }

HV_NUMBER_ASSIGNMENT(char, kCFNumberCharType)
HV_NUMBER_ASSIGNMENT(unsigned char, kCFNumberUInt8Type)
HV_NUMBER_ASSIGNMENT(short, kCFNumberShortType)
HV_NUMBER_ASSIGNMENT(unsigned short, kCFNumberUInt16Type)
HV_NUMBER_ASSIGNMENT(int, kCFNumberIntType)
HV_NUMBER_ASSIGNMENT(unsigned int, kCFNumberUInt32Type)
HV_NUMBER_ASSIGNMENT(long, kCFNumberLongType)
HV_NUMBER_ASSIGNMENT(unsigned long, kCFNumberULongType)
HV_NUMBER_ASSIGNMENT(long long, kCFNumberLongLongType)
HV_NUMBER_ASSIGNMENT(unsigned long long, kCFNumberUInt64Type)
HV_NUMBER_ASSIGNMENT(float, kCFNumberFloatType)
HV_NUMBER_ASSIGNMENT(double, kCFNumberDoubleType)

#undef HV_NUMBER_ASSIGNMENT

// Reading. An empty number reads 0 in every type.

bool HVNumber::HoldsNoNumber() const {
    return m_Ref == nullptr || m_Ref == kCFNull || m_Ref == SharedEmptyObject();
}

char HVNumber::CharValue() const {
    return HoldsNoNumber() ? 0 : valueOf<char>(m_Ref, kCFNumberCharType);
}

unsigned char HVNumber::UnsignedCharValue() const {
    return static_cast<unsigned char>(CharValue());
}

short HVNumber::ShortValue() const {
    return HoldsNoNumber() ? 0 : valueOf<short>(m_Ref, kCFNumberShortType);
}

unsigned short HVNumber::UnsignedShortValue() const {
    return static_cast<unsigned short>(ShortValue());
}

int HVNumber::IntValue() const {
    return HoldsNoNumber() ? 0 : valueOf<int>(m_Ref, kCFNumberIntType);
}

unsigned int HVNumber::UnsignedIntValue() const {
    return static_cast<unsigned int>(IntValue());
}

long HVNumber::LongValue() const {
    return HoldsNoNumber() ? 0 : valueOf<long>(m_Ref, kCFNumberLongType);
}

unsigned long HVNumber::UnsignedLongValue() const {
    return static_cast<unsigned long>(LongValue());
}

long long HVNumber::IntegerValue() const {
    return LongLongValue();
}

long long HVNumber::LongLongValue() const {
    return HoldsNoNumber() ? 0 : valueOf<long long>(m_Ref, kCFNumberLongLongType);
}

unsigned long long HVNumber::UIntegerValue() const {
    return UnsignedLongLongValue();
}

unsigned long long HVNumber::UnsignedLongLongValue() const {
    return static_cast<unsigned long long>(LongLongValue());
}

float HVNumber::FloatValue() const {
    return HoldsNoNumber() ? 0 : valueOf<float>(m_Ref, kCFNumberFloatType);
}

double HVNumber::DoubleValue() const {
    return HoldsNoNumber() ? 0 : valueOf<double>(m_Ref, kCFNumberDoubleType);
}

bool HVNumber::boolValue() const {
    return bool(BoolValue());
}

HVBool HVNumber::BoolValue() const {
    if (HoldsNoNumber()) return HVBool();
    return IntValue() != 0 ? HVBool::Yes() : HVBool::No();
}

bool HVNumber::IsFloatType() const {
    return !HoldsNoNumber() && CFNumberIsFloatType(static_cast<CFNumberRef>(m_Ref));
}

HVNumber::operator const __CFNumber*() const {
    return static_cast<CFNumberRef>(m_Ref);
}

// Comparison.

bool HVNumber::operator==(const HVNumber& other) const {
    bool empty = HoldsNoNumber();
    bool otherEmpty = other.HoldsNoNumber();
    if (empty || otherEmpty) return empty && otherEmpty;
    return CFEqual(m_Ref, other.m_Ref);
}

bool HVNumber::operator!=(const HVNumber& other) const {
    return !operator==(other);
}

bool HVNumber::operator==(bool value) const {
    return boolValue() == value;
}
bool HVNumber::operator!=(bool value) const {
    return !operator==(value);
}
bool HVNumber::operator==(const HVBool& value) const {
    return boolValue() == bool(value);
}
bool HVNumber::operator!=(const HVBool& value) const {
    return !operator==(value);
}

#define HV_NUMBER_COMPARISON(Type, Getter)        \
    bool HVNumber::operator==(Type value) const { \
        return Getter() == value;                 \
    }                                             \
    bool HVNumber::operator!=(Type value) const { \
        return !operator==(value);                \
    }

HV_NUMBER_COMPARISON(char, CharValue)
HV_NUMBER_COMPARISON(unsigned char, UnsignedCharValue)
HV_NUMBER_COMPARISON(short, ShortValue)
HV_NUMBER_COMPARISON(unsigned short, UnsignedShortValue)
HV_NUMBER_COMPARISON(int, IntValue)
HV_NUMBER_COMPARISON(unsigned int, UnsignedIntValue)
HV_NUMBER_COMPARISON(long, LongValue)
HV_NUMBER_COMPARISON(unsigned long, UnsignedLongValue)
HV_NUMBER_COMPARISON(long long, LongLongValue)
HV_NUMBER_COMPARISON(unsigned long long, UnsignedLongLongValue)
HV_NUMBER_COMPARISON(float, FloatValue)
HV_NUMBER_COMPARISON(double, DoubleValue)

#undef HV_NUMBER_COMPARISON

// Text forms.

bool HVNumber::IsNativelyAllowedInPropertyList() const {
    return true;
}

HVString HVNumber::Serialize() {
    return HVString::StringWithFormat("%1.0f", DoubleValue());
}

void HVNumber::Deserialize(const HVString& text) {
    auto string = static_cast<CFStringRef>(text.Ref());
    double value = string != nullptr ? CFStringGetDoubleValue(string) : 0;
    AssignNewNumber(kCFNumberDoubleType, &value);
}

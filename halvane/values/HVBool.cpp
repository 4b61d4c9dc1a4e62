#include <halvane/values/HVBool.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/text/HVString.h>
#include <halvane/values/HVNumber.h>

#include <CoreFoundation/CoreFoundation.h>

#include <unicode/stringoptions.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <string>
#include <string_view>

HV_REGISTER_CLASS(HVBool);

namespace {

// Equality under full Unicode case folding, so "yes", "Yes" and "YES" match.
// A null text matches nothing.
bool equalsIgnoringCase(const HVString& text, std::u16string_view other) {
    auto string = static_cast<CFStringRef>(text.Ref());
    if (string == nullptr) return false;
    CFIndex length = CFStringGetLength(string);
    if (length > INT32_MAX) return false;
    std::u16string units(size_t(length), u'\0');
    CFStringGetCharacters(string, CFRangeMake(0, length), units.data());
    UErrorCode status = U_ZERO_ERROR;
    int32_t order = u_strCaseCompare(units.data(), int32_t(units.size()), other.data(), int32_t(other.size()),
                                     U_FOLD_CASE_DEFAULT, &status);
    return U_SUCCESS(status) && order == 0;
}

}  // namespace

HVBool::HVBool() : HVObject(SharedEmptyObject(), HVBoolClassType) {}

HVBool::HVBool(const HVBool& other) : HVObject(other, HVBoolClassType) {}

HVBool::HVBool(const __CFBoolean* ref) : HVObject(static_cast<const void*>(ref), HVBoolClassType) {}

HVBool::HVBool(const void* const& ref) : HVBool() {
    operator=(HVObject::Create(ref));
}

HVBool::HVBool(const HVObject& object) : HVBool() {
    operator=(object);
}

HVBool::HVBool(bool value) : HVBool() {
    AssignBoolean(value);
}
HVBool::HVBool(char value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(unsigned char value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(short value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(unsigned short value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(int value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(unsigned int value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(long value) : HVBool() {
    AssignBoolean(value != 0);
}
HVBool::HVBool(unsigned long value) : HVBool() {
    AssignBoolean(value != 0);
}

HVClassType HVBool::ClassType() {
    return HVBoolClassType;
}

const void* const& HVBool::SharedEmptyObject() {
    static const void* const empty = [] {
        SInt8 zero = 0;
        return static_cast<const void*>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt8Type, &zero));
    }();
    return empty;
}

HVBool HVBool::True() {
    return HVBool(kCFBooleanTrue);
}
HVBool HVBool::Yes() {
    return HVBool(kCFBooleanTrue);
}
HVBool HVBool::False() {
    return HVBool(kCFBooleanFalse);
}
HVBool HVBool::No() {
    return HVBool(kCFBooleanFalse);
}

HVBool HVBool::BoolFromObject(const HVObject& object) {
    return HVBool(object);
}

HVBool HVBool::BoolFromId(const void* const& ref) {
    return HVBool(ref);
}

void HVBool::AssignBoolean(bool value) {
    m_ClassType = HVBoolClassType;
    Assign(value ? kCFBooleanTrue : kCFBooleanFalse);
}

HVBool& HVBool::operator=(const HVBool& other) {
    HVObject::operator=(other);
    return *this;
}

HVBool& HVBool::operator=(const __CFBoolean* ref) {
    AssignUsingClassType(ref, HVBoolClassType);
    return *this;
}

HVBool& HVBool::operator=(bool value) {
    AssignBoolean(value);
    return *this;
}

HVBool& HVBool::operator=(char value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(unsigned char value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(short value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(unsigned short value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(int value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(unsigned int value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(long value) {
    return operator=(value != 0);
}
HVBool& HVBool::operator=(unsigned long value) {
    return operator=(value != 0);
}

HVBool& HVBool::operator=(const HVObject& object) {
    if (this == &object) return *this;
    HVClassType held = object.ObjectsClassType();
    if (held == HVObjectClassType) held = ClassTypeNeededForObject(object.Ref());
    switch (held) {
        case HVBoolClassType:
            AssignUsingClassType(object.Ref(), HVBoolClassType);
            break;
        case HVNumberClassType:
            HVObject::operator=(HVNumber(object).BoolValue());
            break;
        case HVStringClassType: {
            HVString text(object.Ref());
            AssignBoolean(equalsIgnoringCase(text, u"true") || equalsIgnoringCase(text, u"YES"));
            break;
        }
        default:
            if (object.IsNull()) {
                Nullify();
            } else {
                AssignBoolean(false);
            }
            break;
    }
    return *this;
}

HVBool::operator bool() const {
    return m_Ref != nullptr && m_Ref == kCFBooleanTrue;
}

bool HVBool::operator!() const {
    return !operator bool();
}

HVBool::operator const __CFBoolean*() const {
    return static_cast<CFBooleanRef>(m_Ref);
}

bool HVBool::operator==(const HVBool& other) const {
    return operator bool() == other.operator bool();
}
bool HVBool::operator!=(const HVBool& other) const {
    return !operator==(other);
}
bool HVBool::operator==(bool value) const {
    return operator bool() == value;
}
bool HVBool::operator!=(bool value) const {
    return operator bool() != value;
}
bool HVBool::operator==(char value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(char value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(unsigned char value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(unsigned char value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(short value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(short value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(unsigned short value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(unsigned short value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(int value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(int value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(unsigned int value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(unsigned int value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(long value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(long value) const {
    return operator bool() != (value != 0);
}
bool HVBool::operator==(unsigned long value) const {
    return operator bool() == (value != 0);
}
bool HVBool::operator!=(unsigned long value) const {
    return operator bool() != (value != 0);
}

HVString HVBool::Serialize() {
    return operator bool() ? "YES" : "NO";
}

void HVBool::Deserialize(const HVString& text) {
    operator=(static_cast<const HVObject&>(text));
}

bool HVBool::IsNativelyAllowedInPropertyList() const {
    return true;
}

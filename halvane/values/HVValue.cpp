#include <halvane/values/HVValue.h>

#include <halvane/collections/HVArray.h>
#include <halvane/core/detail/ClassRegistry.h>

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

HV_REGISTER_CLASS(HVValue);

namespace {

enum ContainerIndex : CFIndex { kMarkerIndex = 0, kTypeNameIndex = 1, kNumberIndex = 2, kContainerCount = 3 };

CFStringRef containerMarker() {
    return CFSTR("HVValue_Container_AX7");
}

// The number type code of a C type name, compared exactly in this order;
// false for a name without one. Pointers are kept as 64-bit integers.
bool numberTypeOfCType(CFStringRef name, CFNumberType& type) {
    static const struct {
        CFStringRef name;
        CFNumberType type;
    } table[] = {
        {CFSTR("int"), kCFNumberIntType},
        {CFSTR("unsigned int"), kCFNumberIntType},
        {CFSTR("const void*"), kCFNumberLongLongType},
        {CFSTR("void*"), kCFNumberLongLongType},
        {CFSTR("long"), kCFNumberLongType},
        {CFSTR("unsigned long"), kCFNumberLongType},
        {CFSTR("long long"), kCFNumberLongLongType},
        {CFSTR("unsigned long long"), kCFNumberLongLongType},
        {CFSTR("short"), kCFNumberShortType},
        {CFSTR("unsigned short"), kCFNumberShortType},
        {CFSTR("char"), kCFNumberCharType},
        {CFSTR("unsigned char"), kCFNumberCharType},
        {CFSTR("double"), kCFNumberDoubleType},
        {CFSTR("float"), kCFNumberFloatType},
        {CFSTR("bool"), kCFNumberCharType},
    };
    if (name == nullptr || CFGetTypeID(name) != CFStringGetTypeID()) return false;
    for (const auto& entry : table) {
        if (CFStringCompare(name, entry.name, 0) == kCFCompareEqualTo) {
            type = entry.type;
            return true;
        }
    }
    return false;
}

// A new container (+1) for the value at bytes, or null when the platform
// cannot make one.
CFArrayRef newContainer(CFStringRef typeName, CFNumberType type, const void* bytes) {
    CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, type, bytes);
    if (number == nullptr) return nullptr;
    CFStringRef name = CFStringCreateCopy(kCFAllocatorDefault, typeName);
    const void* elements[kContainerCount] = {containerMarker(), name, number};
    CFArrayRef container = CFArrayCreate(kCFAllocatorDefault, elements, kContainerCount, &kCFTypeArrayCallBacks);
    CFRelease(number);
    if (name != nullptr) CFRelease(name);
    return container;
}

// The element of a container, or null when ref is not an array with room
// for it.
CFTypeRef elementOf(const void* ref, CFIndex index) {
    if (ref == nullptr || CFGetTypeID(ref) != CFArrayGetTypeID()) return nullptr;
    auto array = static_cast<CFArrayRef>(ref);
    if (CFArrayGetCount(array) <= index) return nullptr;
    return CFArrayGetValueAtIndex(array, index);
}

CFNumberRef numberOf(const void* ref) {
    CFTypeRef number = elementOf(ref, kNumberIndex);
    if (number == nullptr || CFGetTypeID(number) != CFNumberGetTypeID()) return nullptr;
    return static_cast<CFNumberRef>(number);
}

CFStringRef typeNameOf(const void* ref) {
    CFTypeRef name = elementOf(ref, kTypeNameIndex);
    if (name == nullptr || CFGetTypeID(name) != CFStringGetTypeID()) return nullptr;
    return static_cast<CFStringRef>(name);
}

}  // namespace

HVValue::HVValue() : HVObject(SharedEmptyObject(), HVValueClassType) {}

HVValue::HVValue(const HVValue& other) : HVObject(other, HVValueClassType) {}

HVValue::HVValue(const HVObject& object) : HVObject(object, HVValueClassType) {}

HVValue::HVValue(const void* const& ref) : HVObject(ref, HVValueClassType) {}

HVValue::HVValue(const __CFArray* ref) : HVObject(static_cast<const void*>(ref), HVValueClassType) {}

HVClassType HVValue::ClassType() {
    return HVValueClassType;
}

const void* const& HVValue::SharedEmptyObject() {
    static const void* const empty = [] {
        int zero = 0;
        return newContainer(CFSTR("int"), kCFNumberIntType, &zero);
    }();
    return empty;
}

HVValue HVValue::ValueWithBytesOfCType(const void* bytes, const HVString& cType) {
    HVValue value;
    value.InitWithBytesOfCType(bytes, cType);
    return value;
}

HVValue HVValue::ValueWithPointer(const void* pointer) {
    HVValue value;
    value.InitWithPointer(pointer);
    return value;
}

HVValue HVValue::ValueFromObject(const HVObject& object) {
    return HVValue(object);
}

void HVValue::InitWithBytesOfCType(const void* bytes, const HVString& cType) {
    auto name = static_cast<CFStringRef>(cType.Ref());
    CFNumberType type;
    if (bytes == nullptr || cType.IsNull() || !numberTypeOfCType(name, type)) {
        Empty();
        return;
    }
    CFArrayRef container = newContainer(name, type, bytes);
    if (container == nullptr) {
        Empty();
        return;
    }
    AssignUnderlyingValueAndTakeOwnership(container);
}

void HVValue::InitWithPointer(const void* pointer) {
    // The pointer's own bytes, read back as a 64-bit integer.
    InitWithBytesOfCType(&pointer, "const void*");
}

void HVValue::GetValue(void* buffer) const {
    CFNumberRef number = numberOf(m_Ref);
    CFNumberType type;
    if (buffer == nullptr || number == nullptr || !numberTypeOfCType(typeNameOf(m_Ref), type)) return;
    CFNumberGetValue(number, type, buffer);
}

void* HVValue::PointerValue() const {
    CFNumberRef number = numberOf(m_Ref);
    int64_t bits = 0;
    if (number != nullptr) CFNumberGetValue(number, kCFNumberSInt64Type, &bits);
    return reinterpret_cast<void*>(static_cast<intptr_t>(bits));
}

HVString HVValue::CType() const {
    CFStringRef name = typeNameOf(m_Ref);
    if (name == nullptr) return HVString::SharedNullString();
    return HVString(name);
}

HVValue& HVValue::operator=(const HVValue& other) {
    HVObject::operator=(other);
    return *this;
}

HVValue::operator const __CFArray*() const {
    return static_cast<const __CFArray*>(m_Ref);
}

HVString HVValue::Serialize() {
    return HVString::StringWithFormat("%@", HVArray(m_Ref).Serialize().Ref());
}

void HVValue::Deserialize(const HVString& text) {
    // Reading the container back hands its marker string, which begins
    // like a tagged text, to this function with no payload: nothing to do.
    if (text.IsEmpty()) return;
    HVArray container;
    container.Deserialize(AddPropertyListFileText(text));
    CFStringRef name = typeNameOf(container.Ref());
    CFNumberRef number = numberOf(container.Ref());
    CFNumberType type;
    if (number == nullptr || !numberTypeOfCType(name, type)) return;
    // The number read back has the reader's type (a 64-bit integer or a
    // double); it is stored again with the code of the C type.
    alignas(16) unsigned char bytes[16] = {};
    CFNumberGetValue(number, type, bytes);
    CFArrayRef rebuilt = newContainer(name, type, bytes);
    if (rebuilt != nullptr) AssignUnderlyingValueAndTakeOwnership(rebuilt);
}

void HVValue::AssignUnderlyingValueAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, HVValueClassType);
}

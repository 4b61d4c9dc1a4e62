#include <halvane/core/HVObject.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/core/detail/ClassTypeTable.h>
#include <halvane/errors/HVLog.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace halvane::detail {

namespace {

constexpr int kClassTypeCount = HVSocketClassType + 1;

// Filled during static initialisation, read afterwards: no lock needed.
std::array<ClassEntry, kClassTypeCount>& classTable() {
    static std::array<ClassEntry, kClassTypeCount> table{};
    return table;
}

}  // namespace

bool RegisterClass(HVClassType type, ClassEntry entry) {
    if (type <= 0 || type >= kClassTypeCount) return false;
    classTable()[type] = entry;
    return true;
}

const ClassEntry* FindClass(HVClassType type) {
    if (type <= 0 || type >= kClassTypeCount) return nullptr;
    const ClassEntry& entry = classTable()[type];
    return entry.create != nullptr ? &entry : nullptr;
}

}  // namespace halvane::detail

using halvane::detail::FindClass;

namespace {

// The immutable class of a family: 2 -> 1, 7 -> 6, 11 -> 10.
HVClassType immutableBaseOf(HVClassType type) {
    switch (type) {
        case HVMutableArrayClassType: return HVArrayClassType;
        case HVMutableDataClassType: return HVDataClassType;
        case HVMutableDictionaryClassType: return HVDictionaryClassType;
        default: return type;
    }
}

// CoreFoundation type IDs looked up once per process.
struct PlatformTypeIDs {
    CFTypeID string = CFStringGetTypeID();
    CFTypeID dictionary = CFDictionaryGetTypeID();
    CFTypeID data = CFDataGetTypeID();
    CFTypeID array = CFArrayGetTypeID();
    CFTypeID date = CFDateGetTypeID();
    CFTypeID boolean = CFBooleanGetTypeID();
    CFTypeID number = CFNumberGetTypeID();
    CFTypeID error = CFErrorGetTypeID();
    CFTypeID null = CFNullGetTypeID();
};

const PlatformTypeIDs& platformTypeIDs() {
    static const PlatformTypeIDs ids;
    return ids;
}

// The runtime class of retained objects registers first, so it gets the
// first client type ID.
constexpr CFTypeID kRetainedObjectTypeID = 256;

}  // namespace

namespace halvane::detail {

constinit std::array<HVClassType, kClassTypeTableSize> classTypeTable{};
constinit std::atomic<bool> classTypeTableFilled{false};

}  // namespace halvane::detail

using halvane::detail::classTypeTable;
using halvane::detail::classTypeTableFilled;
using halvane::detail::ClassTypeOfTypeID;
using halvane::detail::kClassTypeTableSize;

namespace {

static_assert(kClassTypeTableSize == kRetainedObjectTypeID + 1);

// Fills the table of platform type IDs once per process.
[[gnu::noinline]] void fillClassTypeTable() {
    static const bool filled = [] {
        classTypeTable.fill(HVUnknownClassType);
        const PlatformTypeIDs& ids = platformTypeIDs();
        const std::pair<CFTypeID, HVClassType> known[] = {
            {ids.string, HVStringClassType}, {ids.dictionary, HVDictionaryClassType},
            {ids.data, HVDataClassType},     {ids.array, HVArrayClassType},
            {ids.date, HVDateClassType},     {ids.boolean, HVBoolClassType},
            {ids.number, HVNumberClassType}, {ids.error, HVErrorClassType},
            {ids.null, HVNullClassType},     {kRetainedObjectTypeID, HVRetainedObjectClassType},
        };
        for (const auto& [typeID, type] : known) {
            if (typeID < kClassTypeTableSize) classTypeTable[typeID] = type;
        }
        classTypeTableFilled.store(true, std::memory_order_release);
        return true;
    }();
    (void)filled;
}

HVClassType classTypeOfPlatformType(CFTypeID typeID) {
    if (!classTypeTableFilled.load(std::memory_order_acquire)) fillClassTypeTable();
    return ClassTypeOfTypeID(typeID);
}

// An array that boxes a plain value: three elements, one of them the marker.
bool isValueContainer(CFArrayRef array) {
    return CFArrayGetCount(array) == 3 &&
           CFArrayContainsValue(array, CFRangeMake(0, 3), CFSTR("HVValue_Container_AX7"));
}

// The class type of the platform types that one ID does not settle:
// collections (mutable or not, arrays boxing a value) and unknown types,
// which are logged. Kept apart so the common lookup needs no stack frame.
[[gnu::noinline]] HVClassType refinedClassType(CFTypeRef ref, CFTypeID typeID, HVClassType type) {
    switch (type) {
        case HVArrayClassType:
            if (isValueContainer(static_cast<CFArrayRef>(ref))) return HVValueClassType;
            if (_CFArrayIsMutable(static_cast<CFArrayRef>(ref))) return HVMutableArrayClassType;
            return type;
        case HVDataClassType:
            return _CFDataIsMutable(static_cast<CFDataRef>(ref)) ? HVMutableDataClassType : type;
        case HVDictionaryClassType:
            return _CFDictionaryIsMutable(static_cast<CFDictionaryRef>(ref)) ? HVMutableDictionaryClassType : type;
        case HVUnknownClassType:
            HVLog("HVObject::ClassTypeNeededForObject does not have the ability to identify the class with an "
                  "internal object of type %d",
                  int(typeID));
            return HVObjectClassType;
        default: return type;
    }
}

// A shallow mutable copy for a mutable wrapper receiving an immutable object
// of its family; nullptr for other types.
CFTypeRef createMutableCopy(CFTypeRef ref, HVClassType type) {
    switch (type) {
        case HVMutableArrayClassType:
            return CFArrayCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFArrayRef>(ref));
        case HVMutableDataClassType:
            return CFDataCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDataRef>(ref));
        case HVMutableDictionaryClassType:
            return CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDictionaryRef>(ref));
        default: return nullptr;
    }
}

// The class types that may hold ref when it crosses families (step 5 of the
// assignment rule).
bool mayHold(HVClassType wrapper, CFTypeRef ref) {
    HVClassType needed = HVObject::ClassTypeNeededForObject(ref);
    if (wrapper == needed || wrapper == HVObjectClassType) return true;
    const PlatformTypeIDs& ids = platformTypeIDs();
    CFTypeID typeID = ref != nullptr ? CFGetTypeID(ref) : 0;
    if (typeID == ids.string) return wrapper == HVScannerClassType;
    if (typeID == ids.array) {
        HVClassType second = needed == HVArrayClassType ? HVMutableArrayClassType : HVArrayClassType;
        return wrapper == second || wrapper == HVEnumeratorClassType;
    }
    if (typeID == ids.dictionary) {
        return wrapper == (needed == HVDictionaryClassType ? HVMutableDictionaryClassType : HVDictionaryClassType);
    }
    if (typeID == ids.data) return wrapper == (needed == HVDataClassType ? HVMutableDataClassType : HVDataClassType);
    if (typeID == ids.number) return wrapper == HVValueClassType;
    return false;
}

}  // namespace

HVObject::HVObject() : m_Ref(nullptr), m_ActualClassType(HVObjectClassType), m_ClassType(HVObjectClassType) {}

HVObject::HVObject(const HVObject& other)
    : m_Ref(nullptr), m_ActualClassType(HVObjectClassType), m_ClassType(other.m_ClassType) {
    operator=(other);
}

HVObject::HVObject(const void* const& ref)
    : m_Ref(ref), m_ActualClassType(HVObjectClassType), m_ClassType(HVObjectClassType) {
    if (m_Ref != nullptr) _CFRuntimeRetain(m_Ref);
}

HVClassType HVObject::ClassType() { return HVObjectClassType; }

const void* const& HVObject::SharedEmptyObject() {
    static const void* const none = nullptr;
    return none;
}

const void* HVObject::SharedEmptyObjectOfClassType(HVClassType type) {
    const halvane::detail::ClassEntry* entry = FindClass(type);
    if (entry == nullptr || entry->sharedEmptyObject == nullptr) return nullptr;
    return entry->sharedEmptyObject();
}

HVClassType HVObject::ClassTypeNeededForObject(const void* const& ref) {
    if (ref == nullptr) return HVObjectClassType;
    CFTypeID typeID = _CFRuntimeGetTypeID(ref);
    HVClassType type = classTypeOfPlatformType(typeID);
    return halvane::detail::IsSettledByTypeID(type) ? type : refinedClassType(ref, typeID, type);
}

HVString HVObject::ClassNameOfClassType(HVClassType type) {
    switch (type) {
        case HVArrayClassType: return "HVArray";
        case HVMutableArrayClassType: return "HVMutableArray";
        case HVBoolClassType: return "HVBool";
        case HVBundleClassType: return "HVBundle";
        case HVDataClassType: return "HVData";
        case HVMutableDataClassType: return "HVMutableData";
        case HVDateClassType: return "HVDate";
        case HVDictionaryClassType: return "HVDictionary";
        case HVMutableDictionaryClassType: return "HVMutableDictionary";
        case HVEnumeratorClassType: return "HVEnumerator";
        case HVErrorClassType: return "HVError";
        case HVExceptionClassType: return "HVException";
        case HVNullClassType: return "HVNull";
        case HVNumberClassType: return "HVNumber";
        case HVRetainedObjectClassType: return "HVRetainedObject";
        case HVScannerClassType: return "HVScanner";
        case HVStringClassType: return "HVString";
        case HVURLClassType: return "HVURL";
        case HVValueClassType: return "HVValue";
        default: return HVString::SharedEmptyString();
    }
}

HVClassType HVObject::ClassTypeOfClassName(const HVString& name) {
    // By prefix, in this order: the order decides between names that begin
    // alike (a name that begins with HVDateFormatter answers HVDate).
    static const std::pair<const char*, HVClassType> prefixes[] = {
        {"HVDictionary", HVDictionaryClassType},
        {"HVMutableDictionary", HVMutableDictionaryClassType},
        {"HVArray", HVArrayClassType},
        {"HVMutableArray", HVMutableArrayClassType},
        {"HVValue", HVValueClassType},
        {"HVURL", HVURLClassType},
        {"HVError", HVErrorClassType},
        {"HVDate", HVDateClassType},
        {"HVString", HVStringClassType},
        {"HVData", HVDataClassType},
        {"HVMutableData", HVMutableDataClassType},
        {"HVNumber", HVNumberClassType},
        {"HVBool", HVBoolClassType},
        {"HVException", HVExceptionClassType},
        {"HVEnumerator", HVEnumeratorClassType},
        {"HVBundle", HVBundleClassType},
        {"HVScanner", HVScannerClassType},
        {"HVNull", HVNullClassType},
        {"HVRetainedObject", HVRetainedObjectClassType},
    };
    CFStringRef text = static_cast<CFStringRef>(name.Ref());
    if (text == nullptr) return HVUnknownClassType;
    CFIndex length = CFStringGetLength(text);
    for (const auto& [prefix, type] : prefixes) {
        CFIndex prefixLength = CFIndex(std::char_traits<char>::length(prefix));
        if (prefixLength > length) continue;
        bool matches = true;
        for (CFIndex i = 0; i < prefixLength && matches; ++i) {
            matches = CFStringGetCharacterAtIndex(text, i) == UniChar(prefix[i]);
        }
        if (matches) return type;
    }
    return HVUnknownClassType;
}

HVObject HVObject::Create(const void* const& ref) {
    HVClassType type = ref != nullptr ? halvane::detail::ClassTypeOfReference(ref) : HVObjectClassType;
    return HVObject(ref, type);
}

std::shared_ptr<HVObject> HVObject::CreateObjectOfClassType(const void* const& ref, HVClassType type) {
    const halvane::detail::ClassEntry* entry = FindClass(type);
    if (entry == nullptr) return nullptr;
    return entry->create(ref);
}

HVObject& HVObject::operator=(const HVObject& other) {
    if (this == &other) return *this;
    const void* source = other.m_Ref;
    if (m_ClassType != other.m_ClassType) {
        if (other.m_ActualClassType == m_ActualClassType || m_ActualClassType == HVObjectClassType ||
            m_ActualClassType == other.m_ClassType) {
            m_ClassType = other.m_ClassType;
        } else {
            HVClassType targetFamily = immutableBaseOf(m_ClassType);
            HVClassType sourceFamily = immutableBaseOf(other.m_ClassType);
            if (m_ActualClassType == sourceFamily) {
                // An immutable wrapper receiving a mutable object of its
                // family holds that very object; no copy is made.
                m_ClassType = other.m_ClassType;
            } else if (targetFamily == sourceFamily) {
                // A mutable wrapper receiving an immutable object keeps a
                // mutable copy of its own.
                CFTypeRef copy = source != nullptr ? createMutableCopy(source, m_ActualClassType) : nullptr;
                if (copy == nullptr) {
                    Assign(source);
                } else {
                    AssignAndTakeOwnership(copy);
                }
                return *this;
            } else if (mayHold(m_ActualClassType, source)) {
                m_ClassType = other.m_ClassType;
            } else {
                // A typed wrapper never holds a foreign object: the
                // assignment is refused without a word.
                return *this;
            }
        }
    }
    Assign(source);
    return *this;
}

HVObject& HVObject::operator=(const void* const& ref) {
    Assign(ref);
    return *this;
}

void HVObject::Assign(const void* const& ref) {
    if (ref == m_Ref) return;
    Nullify();
    m_Ref = ref;
    Retain();
}

void HVObject::AssignAndTakeOwnership(const void* const& ref) {
    if (ref == m_Ref) return;
    Nullify();
    m_Ref = ref;
}

void HVObject::ReplaceReference(const void* ref, HVClassType type) {
    if (ref == m_Ref) return;
    Nullify();
    m_Ref = ref;
    m_ClassType = type;
    Retain();
}

void HVObject::ReplaceReferenceTakingOwnership(const void* ref, HVClassType type) {
    if (ref == m_Ref) {
        if (ref != nullptr) CFRelease(ref);
        return;
    }
    Nullify();
    m_Ref = ref;
    m_ClassType = type;
}

void HVObject::AssignUsingClassType(const void* const& ref, HVClassType type) {
    m_ClassType = type;
    Assign(ref);
}

void HVObject::AssignTakeOwnershipAndSetType(const void* const& ref) {
    m_ClassType = ClassTypeNeededForObject(ref);
    AssignAndTakeOwnership(ref);
}

const void* HVObject::RefAutorelease() const { return m_Ref; }

const void* HVObject::RefCopy() const {
    if (m_Ref == nullptr) return nullptr;
    HVClassType type = m_ClassType;
    if (IsMutable()) type = immutableBaseOf(classTypeOfPlatformType(CFGetTypeID(m_Ref)));
    CFTypeRef copy = nullptr;
    switch (type) {
        case HVArrayClassType: copy = CFArrayCreateCopy(kCFAllocatorDefault, static_cast<CFArrayRef>(m_Ref)); break;
        case HVMutableArrayClassType:
            copy = CFArrayCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFArrayRef>(m_Ref));
            break;
        case HVDataClassType: copy = CFDataCreateCopy(kCFAllocatorDefault, static_cast<CFDataRef>(m_Ref)); break;
        case HVMutableDataClassType:
            copy = CFDataCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDataRef>(m_Ref));
            break;
        case HVDateClassType:
            copy = CFDateCreate(kCFAllocatorDefault, CFDateGetAbsoluteTime(static_cast<CFDateRef>(m_Ref)));
            break;
        case HVDictionaryClassType:
            copy = CFDictionaryCreateCopy(kCFAllocatorDefault, static_cast<CFDictionaryRef>(m_Ref));
            break;
        case HVMutableDictionaryClassType:
            copy = CFDictionaryCreateMutableCopy(kCFAllocatorDefault, 0, static_cast<CFDictionaryRef>(m_Ref));
            break;
        case HVErrorClassType: {
            auto error = static_cast<CFErrorRef>(const_cast<void*>(m_Ref));
            CFDictionaryRef userInfo = CFErrorCopyUserInfo(error);
            copy = CFErrorCreate(kCFAllocatorDefault, CFErrorGetDomain(error), CFErrorGetCode(error), userInfo);
            if (userInfo != nullptr) CFRelease(userInfo);
            break;
        }
        case HVNumberClassType:
        case HVValueClassType: {
            auto number = static_cast<CFNumberRef>(m_Ref);
            alignas(16) unsigned char value[16] = {};
            CFNumberType numberType = CFNumberGetType(number);
            CFNumberGetValue(number, numberType, value);
            copy = CFNumberCreate(kCFAllocatorDefault, numberType, value);
            break;
        }
        case HVStringClassType: copy = CFStringCreateCopy(kCFAllocatorDefault, static_cast<CFStringRef>(m_Ref)); break;
        default: copy = nullptr; break;
    }
    // Callers own one reference to an uncopied object but two to a fresh
    // copy; the surplus is theirs to release. Kept so: callers rely on it.
    const void* result = copy != nullptr ? copy : m_Ref;
    CFRetain(result);
    return result;
}

unsigned long long HVObject::RetainCount() const {
    if (m_Ref == nullptr) return 0;
    return static_cast<unsigned long long>(static_cast<long long>(static_cast<int32_t>(CFGetRetainCount(m_Ref))));
}

unsigned long long HVObject::Hash() const { return CFHash(m_Ref) & 0xFFFFFFFFull; }

bool HVObject::IsSameClassTypeAs(const HVObject& other) const { return m_ClassType == other.m_ClassType; }

bool HVObject::IsTypeOfClass(HVClassType type) const {
    if (m_ClassType == type) return true;
    return IsMutable() && m_ClassType != HVUnknownClassType && immutableBaseOf(m_ClassType) == type;
}

bool HVObject::IsMutable() const {
    return m_ClassType == HVMutableArrayClassType || m_ClassType == HVMutableDataClassType ||
           m_ClassType == HVMutableDictionaryClassType || m_ClassType == HVUnknownClassType;
}

bool HVObject::operator==(const HVObject& other) const { return operator==(other.m_Ref); }

bool HVObject::operator!=(const HVObject& other) const { return !operator==(other.m_Ref); }

bool HVObject::operator==(const void* const& ref) const {
    if (m_Ref != nullptr && ref != nullptr) return CFEqual(m_Ref, ref);
    return m_Ref == nullptr && ref == nullptr;
}

bool HVObject::operator!=(const void* const& ref) const { return !operator==(ref); }

HVObject::operator const void*() const { return m_Ref; }

bool HVObject::IsEmpty() const { return IsNull() || m_Ref == SharedEmptyObjectOfClassType(m_ClassType); }

void HVObject::Empty() {
    const void* shared = SharedEmptyObjectOfClassType(m_ClassType);
    if (m_Ref == shared) return;
    Nullify();
    m_Ref = shared;
    Retain();
}

bool HVObject::IsNull() const { return m_Ref == nullptr || m_Ref == kCFNull; }

void HVObject::Nullify() {
    if (m_Ref == nullptr) return;
    _CFRuntimeRelease(m_Ref);
    m_Ref = nullptr;
}

HVString HVObject::Description() {
    HVString text;
    if (m_Ref != nullptr) text.AssignAndTakeOwnership(CFCopyDescription(m_Ref));
    return text;
}

void HVObject::Retain() {
    if (m_Ref != nullptr) _CFRuntimeRetain(m_Ref);
}

void HVObject::Release() {
    if (m_Ref == nullptr) return;
    CFRelease(m_Ref);
    // After a release the wrapper holds its class's empty value, not null.
    m_Ref = SharedEmptyObjectOfClassType(m_ClassType);
    if (m_Ref != nullptr) CFRetain(m_Ref);
}

HVString HVObject::Serialize() { return Description(); }

void HVObject::Deserialize(const HVString&) {}

bool HVObject::IsNativelyAllowedInPropertyList() const { return false; }

// id: a pointer, nothing more.
id::id() : m_Pointer(nullptr) {}
id::id(const id& other) : m_Pointer(other.m_Pointer) {}
id::id(const void* pointer) : m_Pointer(pointer) {}
id& id::operator=(const id& other) {
    m_Pointer = other.m_Pointer;
    return *this;
}
id& id::operator=(const void* pointer) {
    m_Pointer = pointer;
    return *this;
}
id::~id() {}
bool id::operator==(const id& other) const { return m_Pointer == other.m_Pointer; }
bool id::operator!=(const id& other) const { return m_Pointer != other.m_Pointer; }
bool id::operator==(const void* pointer) const { return m_Pointer == pointer; }
bool id::operator!=(const void* pointer) const { return m_Pointer != pointer; }
id::operator const void*() const { return m_Pointer; }

HVAutoreleasePool::HVAutoreleasePool() : m_Unused(nullptr) {}
HVAutoreleasePool& HVAutoreleasePool::operator=(const HVAutoreleasePool&) { return *this; }
HVAutoreleasePool::~HVAutoreleasePool() {}

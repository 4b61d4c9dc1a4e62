#include <halvane/core/HVNull.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/errors/HVAssert.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

// The held type counts as empty only when null.
HV_REGISTER_CLASS_EMPTY_WHEN_NULL(HVNull);

// The null object is immortal: it is stored without a retain of its own, and
// the release at destruction leaves it alone.
HVNull::HVNull() : HVObject() {
    m_ActualClassType = HVNullClassType;
    m_ClassType = HVNullClassType;
    m_Ref = SharedEmptyObject();
}

HVNull::HVNull(const HVNull&) : HVNull() {}

HVNull::HVNull(const void* const&) : HVNull() {}

HVClassType HVNull::ClassType() {
    return HVNullClassType;
}

const void* const& HVNull::SharedEmptyObject() {
    static const void* const null = kCFNull;
    return null;
}

bool HVNull::IsNull() const {
    return true;
}

HVString HVNull::Serialize() {
    return "<null>";
}

void HVNull::Deserialize(const HVString& text) {
    if (!text.IsEqualToString("<null>")) {
        HVAssertionFailed("SerializedObject.IsEqualToString(STR(\"<null>\"))", "HVNull::Deserialize", "HVNull", 69);
    }
}

#include <halvane/collections/HVEnumerator.h>

#include <halvane/core/detail/ClassRegistry.h>

// An enumerator's held type counts as empty only when it holds no array.
HV_REGISTER_CLASS_EMPTY_WHEN_NULL(HVEnumerator);

HVEnumerator::HVEnumerator() : HVObject(SharedEmptyObject(), HVEnumeratorClassType), m_Position(0) {}

HVEnumerator::HVEnumerator(const HVEnumerator& other)
    : HVObject(other, HVEnumeratorClassType), m_Position(other.m_Position) {}

HVEnumerator::HVEnumerator(const HVArray& array) : HVObject(array.Ref(), HVEnumeratorClassType), m_Position(0) {}

HVEnumerator::HVEnumerator(const void* const& ref) : HVObject(ref, HVEnumeratorClassType), m_Position(0) {}

HVClassType HVEnumerator::ClassType() { return HVEnumeratorClassType; }

const void* const& HVEnumerator::SharedEmptyObject() { return HVObject::SharedEmptyObject(); }

HVEnumerator& HVEnumerator::operator=(const HVEnumerator& other) {
    if (this == &other) return *this;
    Assign(other.m_Ref);
    m_Position = other.m_Position;
    return *this;
}

HVObject HVEnumerator::NextObject() {
    HVArray all = AllObjects();
    if (m_Position >= all.Count()) return HVObject();
    // Handed on through the copy constructor, so the result is a plain
    // object that a caller's loop variable can take the end marker into.
    const HVObject element = all.ObjectAtIndex(m_Position++);
    return HVObject(element);
}

HVString HVEnumerator::NextStringObject() {
    HVArray all = AllObjects();
    if (m_Position >= all.Count()) return HVString::SharedNullString();
    return all.StringAtIndex(m_Position++);
}

HVArray HVEnumerator::AllObjects() const {
    if (IsNull()) return HVArray();
    return HVArray(m_Ref);
}

bool HVEnumerator::IsEmpty() const { return AllObjects().IsEmpty(); }

void HVEnumerator::Empty() {
    Assign(SharedEmptyObject());
    m_Position = 0;
}

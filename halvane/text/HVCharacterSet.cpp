#include <halvane/text/HVCharacterSet.h>

#include <halvane/core/detail/ClassRegistry.h>
#include <halvane/text/HVRange.h>
#include <halvane/text/HVString.h>

#include <CoreFoundation/CoreFoundation.h>

HV_REGISTER_CLASS(HVCharacterSet);

namespace {

CFCharacterSetRef asSet(const void* ref) {
    return static_cast<CFCharacterSetRef>(ref);
}

// The platform string of a text; a null text reads as no characters.
CFStringRef charactersOf(const HVString& text) {
    return text.Ref() != nullptr ? static_cast<CFStringRef>(text.Ref()) : CFSTR("");
}

// A wrapper that adopts a newly created set (a null set if none was made).
HVCharacterSet adopted(CFCharacterSetRef created) {
    HVCharacterSet set(created);
    if (created != nullptr) CFRelease(created);
    return set;
}

HVCharacterSet predefined(CFStringRef characters) {
    return adopted(CFCharacterSetCreateWithCharactersInString(kCFAllocatorDefault, characters));
}

}  // namespace

HVCharacterSet::HVCharacterSet() : HVObject(SharedEmptyObject(), HVCharacterSetClassType) {}

HVCharacterSet::HVCharacterSet(const HVCharacterSet& other) : HVObject(other, HVCharacterSetClassType) {}

HVCharacterSet::HVCharacterSet(const __CFCharacterSet* ref)
    : HVObject(static_cast<const void*>(ref), HVCharacterSetClassType) {}

HVCharacterSet::HVCharacterSet(const void* const& ref) : HVObject(ref, HVCharacterSetClassType) {}

HVCharacterSet::HVCharacterSet(const HVObject& object) : HVObject(object, HVCharacterSetClassType) {}

HVCharacterSet::~HVCharacterSet() = default;

HVClassType HVCharacterSet::ClassType() {
    return HVCharacterSetClassType;
}

const void* const& HVCharacterSet::SharedEmptyObject() {
    static const void* const empty = CFDataCreate(kCFAllocatorDefault, nullptr, 0);
    return empty;
}

const HVCharacterSet& HVCharacterSet::WhitespaceCharacterSet() {
    static const HVCharacterSet set = predefined(CFSTR(" \t"));
    return set;
}

const HVCharacterSet& HVCharacterSet::WhitespaceAndNewlineCharacterSet() {
    static const HVCharacterSet set = predefined(CFSTR(" \t\n\r\v\f"));
    return set;
}

const HVCharacterSet& HVCharacterSet::DecimalDigitCharacterSet() {
    static const HVCharacterSet set = predefined(CFSTR("0123456789"));
    return set;
}

const HVCharacterSet& HVCharacterSet::LetterCharacterSet() {
    static const HVCharacterSet set = predefined(CFSTR("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"));
    return set;
}

const HVCharacterSet& HVCharacterSet::AlphaNumericCharacterSet() {
    static const HVCharacterSet set =
        predefined(CFSTR("0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"));
    return set;
}

HVCharacterSet HVCharacterSet::CharacterSetWithCharactersInString(const HVString& characters) {
    return adopted(CFCharacterSetCreateWithCharactersInString(kCFAllocatorDefault, charactersOf(characters)));
}

HVCharacterSet HVCharacterSet::CharacterSetWithRange(const HVRange& range) {
    return adopted(CFCharacterSetCreateWithCharactersInRange(kCFAllocatorDefault, CFRange(range)));
}

HVCharacterSet HVCharacterSet::InvertedCharacterSet(const HVCharacterSet& set) {
    return adopted(CFCharacterSetCreateInvertedSet(kCFAllocatorDefault, asSet(set.m_Ref)));
}

HVCharacterSet HVCharacterSet::InvertedSet() {
    HVCharacterSet inverted;
    inverted.AssignUnderlyingSetAndTakeOwnership(CFCharacterSetCreateInvertedSet(kCFAllocatorDefault, asSet(m_Ref)));
    return inverted;
}

void HVCharacterSet::AddCharactersInString(const HVString& characters) {
    CFMutableCharacterSetRef edited = CFCharacterSetCreateMutable(kCFAllocatorDefault);
    CFCharacterSetAddCharactersInString(edited, charactersOf(characters));
    CFCharacterSetUnion(edited, asSet(m_Ref));
    CFCharacterSetRef copy = CFCharacterSetCreateCopy(kCFAllocatorDefault, edited);
    CFRelease(edited);
    AssignUnderlyingSetAndTakeOwnership(copy);
}

void HVCharacterSet::RemoveCharactersInString(const HVString& characters) {
    CFMutableCharacterSetRef edited = CFCharacterSetCreateMutable(kCFAllocatorDefault);
    CFCharacterSetUnion(edited, asSet(m_Ref));
    CFCharacterSetRemoveCharactersInString(edited, charactersOf(characters));
    CFCharacterSetRef copy = CFCharacterSetCreateCopy(kCFAllocatorDefault, edited);
    CFRelease(edited);
    AssignUnderlyingSetAndTakeOwnership(copy);
}

HVCharacterSet& HVCharacterSet::operator=(const HVCharacterSet& other) {
    AssignUnderlyingSet(other.m_Ref);
    return *this;
}

HVCharacterSet& HVCharacterSet::operator=(const __CFCharacterSet* ref) {
    AssignUnderlyingSet(ref);
    return *this;
}

HVCharacterSet::operator const __CFCharacterSet*() const {
    return asSet(m_Ref);
}

void HVCharacterSet::AssignUnderlyingSet(const void* ref) { ReplaceReference(ref, HVCharacterSetClassType); }

void HVCharacterSet::AssignUnderlyingSetAndTakeOwnership(const void* ref) {
    ReplaceReferenceTakingOwnership(ref, HVCharacterSetClassType);
}
